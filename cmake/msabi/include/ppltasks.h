// Of the toolset's task library, what <future> names. Nothing here calls std::async, whose tasks would never run.
#pragma once
namespace Concurrency {
class task_options {
public:
    template <class... T>
    task_options(T&&...) {}
};
template <class T>
class task {
public:
    void wait() {}
};
template <class Function>
task<void> create_task(Function&&, task_options = {}) {
    __builtin_trap();
}
}  // namespace Concurrency
