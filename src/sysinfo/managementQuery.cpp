// Queries of the management service, as maps.
#include <cstdlib>
#include <cstring>
#include <memory>

#include "platform/wideText.h"
#include "sysinfo/comService.h"
#include "sysinfo/errand.h"
#include "xoSystem/xoLog.h"
#include "xoSystem/xoSystemUtils.h"

namespace xo::sysinfo {
namespace {

// Shared by the queries of all threads, so that they run one after the other.
Lane managementLane(L"xoSystem management");

// A null BSTR is an empty text.
std::string utf8Of(BSTR text) { return text ? platform::toUtf8(text) : std::string(); }

// The service passes 64-bit integers as text and unsigned 32-bit ones as VT_I4, so the CIM type of the property
// decides. A number above INT64_MAX wraps round, as the public header says.
// https://learn.microsoft.com/windows/win32/wmisdk/numbers
xoVariant textOrNumber(BSTR text, CIMTYPE type) {
    const std::string utf8 = utf8Of(text);
    if (type == CIM_SINT64) return static_cast<std::int64_t>(std::strtoll(utf8.c_str(), nullptr, 10));
    if (type == CIM_UINT64) return static_cast<std::int64_t>(std::strtoull(utf8.c_str(), nullptr, 10));
    return utf8;
}

// The data is the value field of a VARIANT or an element of an array, and holds at least the bytes of its kind. It is
// copied by memcpy because its address need not be aligned for every kind. UNKNOWN for a kind without a counterpart.
xoVariant toVariant(const void* data, VARTYPE kind, CIMTYPE type) {
    const auto read = [data](auto value) {
        std::memcpy(static_cast<void*>(&value), data, sizeof value);
        return value;
    };
    switch (kind) {
        case VT_BOOL: return read(VARIANT_BOOL{}) != VARIANT_FALSE;
        case VT_I1: return std::int64_t{read(std::int8_t{})};
        case VT_UI1: return std::int64_t{read(std::uint8_t{})};
        case VT_I2:
            if (type == CIM_UINT16 || type == CIM_CHAR16) return std::int64_t{read(std::uint16_t{})};
            return std::int64_t{read(std::int16_t{})};
        case VT_UI2: return std::int64_t{read(std::uint16_t{})};
        case VT_I4:
            if (type == CIM_UINT32) return std::int64_t{read(std::uint32_t{})};
            return std::int64_t{read(std::int32_t{})};
        case VT_UI4: return std::int64_t{read(std::uint32_t{})};
        case VT_I8:
        case VT_UI8: return read(std::int64_t{});
        case VT_R4: return double{read(float{})};
        case VT_R8: return read(double{});
        case VT_BSTR: return textOrNumber(read(BSTR{}), type);
        default: return {};
    }
}

// UNKNOWN when the array cannot be read. Properties have arrays of one dimension. safeArrayGetElement allocates a copy
// of a text, which is released here.
xoVariant toList(const Com& com, SAFEARRAY* array, VARTYPE kind, CIMTYPE type) {
    xoVariant::xoVariantListImpl list;
    LONG begin = 0, end = -1;
    if (FAILED(com.safeArrayGetLBound(array, 1, &begin)) || FAILED(com.safeArrayGetUBound(array, 1, &end))) return {};
    for (LONG i = begin; i <= end; ++i) {
        std::uint64_t element = 0;  // the largest of the kinds above
        if (FAILED(com.safeArrayGetElement(array, &i, &element))) return {};
        list.push_back(toVariant(&element, kind, type));
        if (kind == VT_BSTR) {
            BSTR text = nullptr;
            std::memcpy(static_cast<void*>(&text), &element, sizeof text);
            com.sysFreeString(text);
        }
    }
    return list;
}

// Whether toVariant above converts the kind. Others (null, objects) are rejected before an element is copied, because a
// copied object would have to be released.
bool isSimple(VARTYPE kind) {
    constexpr std::uint64_t kZero = 0;  // a value of every kind
    return !toVariant(&kZero, kind, CIM_EMPTY).isNull();
}

xoVariant toVariant(const Com& com, const VARIANT& value, CIMTYPE type) {
    const auto kind = static_cast<VARTYPE>(value.vt & VT_TYPEMASK);
    const CIMTYPE elementType = type & ~CIM_FLAG_ARRAY;
    if (!isSimple(kind)) return {};  // UNKNOWN: the property gets no key
    if ((value.vt & VT_ARRAY) != 0) return value.parray ? toList(com, value.parray, kind, elementType) : xoVariant();
    return toVariant(&value.llVal, kind, elementType);
}

// False when the properties cannot be enumerated to their end. Null properties have no key in the row.
bool readRow(const Com& com, IWbemClassObject& object, xoVariant::xoVariantMapImpl& row) {
    // Without the system properties, whose names begin with two underscores.
    if (FAILED(object.BeginEnumeration(WBEM_FLAG_NONSYSTEM_ONLY))) return false;
    for (;;) {
        Bstr name(com);
        OwnedVariant value(com);
        CIMTYPE type = 0;
        const HRESULT result = object.Next(0, name.put(), value.put(), &type, nullptr);
        if (result == WBEM_S_NO_MORE_DATA) return true;
        if (FAILED(result)) return false;
        xoVariant converted = toVariant(com, value.get(), type);
        if (!converted.isNull()) row[utf8Of(name.get())] = std::move(converted);
    }
}

// Written by the errand's thread. The caller reads it only after Errand::wait has returned true.
struct Answer {
    bool isWhole = false;  // false: the rows are incomplete, and the query has failed
    xoVariant::xoVariantListImpl rows;
};

// Runs on the errand's thread, where COM is not initialised yet. The COM objects are declared after com and are
// therefore released before it uninitialises COM.
void query(const std::string& wql, const std::string& nameSpace, Answer& answer) {
    const Com com;
    if (!com.isReady()) return;
    const ComObject<IWbemServices> services = connectManagement(com, platform::toWide(nameSpace));
    ComObject<IEnumWbemClassObject> objects;
    if (!services || FAILED(services.get()->ExecQuery(Bstr(com, L"WQL").get(), Bstr(com, platform::toWide(wql)).get(),
                                                      WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY, nullptr,
                                                      objects.put())))
        return;
    for (;;) {
        ComObject<IWbemClassObject> object;
        ULONG count = 0;
        // Without a limit: the deadline is the caller's, who leaves this thread behind. Since ExecQuery returns at
        // once, an error in the query itself is reported here.
        const HRESULT result = objects.get()->Next(static_cast<LONG>(WBEM_INFINITE), 1, object.put(), &count);
        if (FAILED(result)) return;
        if (count == 0) break;
        xoVariant::xoVariantMapImpl row;
        if (!readRow(com, *object.get(), row)) return;
        answer.rows.push_back(std::move(row));
    }
    answer.isWhole = true;
}

}  // namespace
}  // namespace xo::sysinfo

namespace xo {

bool xoSystemUtils::QueryManagementUtf8(const std::string& wql, xoVariant::xoVariantListImpl& rows, unsigned timeoutMs,
                                        const std::string& nameSpace) {
    rows.clear();
    const auto fail = [&](const char* reason) {
        xoLogObject(xoLogDebug, "SystemInfo", xoLog::editPtr(), nullptr)
            << "the management service " << reason << ": " << std::string_view(wql);
        return false;
    };
    // The service would get the text up to the NUL, which is another query.
    if (wql.find('\0') != std::string::npos || nameSpace.find('\0') != std::string::npos) return fail("refused");
    // Shared with the thread, which may write after this function has returned.
    const auto answer = std::make_shared<sysinfo::Answer>();
    const sysinfo::Deadline deadline(timeoutMs);
    sysinfo::Errand errand(sysinfo::managementLane, deadline, [=] { sysinfo::query(wql, nameSpace, *answer); });
    const bool isInTime = errand.wait(deadline);
    if (isInTime && answer->isWhole) {
        rows = std::move(answer->rows);
        return true;
    }
    return fail(isInTime ? "refused" : "did not answer in time");
}

}  // namespace xo
