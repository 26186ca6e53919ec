#pragma pop_macro("__GNUC_MINOR__")
#pragma pop_macro("__GNUC__")
#pragma pop_macro("_MSC_VER")
