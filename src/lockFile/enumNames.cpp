// The names of the enumerators of the lock file, for xoEnumHelper.
#include "xoSystem/xoEnumHelper.h"
#include "xoSystem/xoLockFile.h"

namespace xo {
namespace {

constexpr xoEnumEntry<xoLockFile::LockType> kLockTypes[] = {{xoLockFile::LockTypeExclusive, "Exclusive"},
                                                            {xoLockFile::LockTypeShared, "Shared"}};

}  // namespace

xoEnumList<xoLockFile::LockType> xoEnumEntries(xoLockFile::LockType) { return kLockTypes; }

}  // namespace xo
