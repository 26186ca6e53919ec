// type_info: its virtual table, to which every type's description points, and the functions that need the list of
// readable names.
#include <vcruntime_typeinfo.h>

extern "C" {
struct __declspec(align(16)) NameList {
    void* head[2];
};
NameList __type_info_root_node;
const char* __cdecl __std_type_info_name(__std_type_info_data*, NameList*);
size_t __cdecl __std_type_info_hash(const __std_type_info_data*);
int __cdecl _purecall();

// Nothing calls through the table: only its address is compared.
typedef int(__cdecl* Slot)();
extern const Slot typeInfoTable[] __asm__("??_7type_info@@6B@");
const Slot typeInfoTable[] = {_purecall};
}

type_info::~type_info() noexcept {}
const char* type_info::name() const noexcept { return __std_type_info_name(&_Data, &__type_info_root_node); }
size_t type_info::hash_code() const noexcept { return __std_type_info_hash(&_Data); }
