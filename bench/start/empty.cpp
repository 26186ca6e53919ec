// Does nothing: what a process costs.
int main() { return 0; }
