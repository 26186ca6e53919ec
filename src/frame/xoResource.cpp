// Resources that are compiled into programs, found by name. Their bytes are not copied; they belong to the module that
// registers them and must stay valid until it unregisters them.
#include "xoSystem/xoResource.h"

#include <map>
#include <string>
#include <utility>

#include "concurrency/lateMutex.h"
#include "frame/resourceRegistry.h"
#include "xoSystem/xoLog.h"

namespace xo {
namespace {

// The bytes of one resource. An empty one may have any pointer.
struct View {
    const char* data = nullptr;
    std::size_t size = 0;
};

// The names and views of all registered resources. Without a lock until full initialisation, when several threads may
// use it.
class Registry {
public:
    void makeThreadSafe() { mMutex.make(); }
    void unmakeThreadSafe() { mMutex.unmake(); }

    // The functions take std::string, so that the caller reads the name before the lock is taken: a bad pointer that
    // faults under the lock could leave it locked.

    // False, with nothing changed, when the name exists.
    bool insert(std::string name, View view) {
        const concurrency::LateMutexLocker locker(mMutex);
        return mEntries.try_emplace(std::move(name), view).second;
    }

    bool erase(const std::string& name) {
        const concurrency::LateMutexLocker locker(mMutex);
        return mEntries.erase(name) != 0;
    }

    bool find(const std::string& name, View& view) {
        const concurrency::LateMutexLocker locker(mMutex);
        const auto found = mEntries.find(name);
        if (found == mEntries.end()) return false;
        view = found->second;
        return true;
    }

private:
    concurrency::LateMutex mMutex;
    std::map<std::string, View> mEntries XO_GUARDED_BY(mMutex);
};

// A bare pointer: modules register resources from static constructors and destructors, whose order is unknown.
Registry* registry = nullptr;

// The name may be null; the log writes a placeholder then.
void report(const char* what, const char* name) { xoLogObject(xoLogCritical) << what << name; }

}  // namespace

void frame::createResourceRegistry() {
    if (!registry) registry = new Registry();
}

void frame::makeResourceRegistryThreadSafe() {
    createResourceRegistry();
    registry->makeThreadSafe();
}

void frame::destroyResourceRegistry() {
    if (registry) registry->unmakeThreadSafe();
    delete registry;
    registry = nullptr;
}

// Called by the static constructors of modules, perhaps before the library is initialised. Of two resources with the
// same name the first one stays. A null name is reported as a conflict and skipped.
void rc::impl::RegisterResources(std::size_t count, const char* blob, const char* const* names,
                                 const std::size_t* sizes, const std::size_t* offsets) {
    if (!blob || !names || !sizes || !offsets) return;
    frame::createResourceRegistry();
    for (std::size_t i = 0; i < count; ++i)
        if (!names[i] || !registry->insert(names[i], {blob + offsets[i], sizes[i]}))
            report("Resource conflict ", names[i]);
}

// Called by static destructors, perhaps after the library was terminated and the registry destroyed.
void rc::impl::UnRegisterResources(std::size_t count, const char*, const char* const* names, const std::size_t*,
                                   const std::size_t*) {
    if (!registry || !names) return;
    for (std::size_t i = 0; i < count; ++i)
        if (!names[i] || !registry->erase(names[i])) report("Resource is already unregistered ", names[i]);
}

bool rc::GetResource(const char* name, const char*& data, std::size_t& size) {
    View view;
    const bool found = registry && name && registry->find(name, view);
    // Set in any case: null and 0 when the resource is missing.
    data = view.data;
    size = view.size;
    if (!found) report("Resource is missing ", name);
    return found;
}

bool rc::GetResource(const char* name, std::string& out) {
    const char* data = nullptr;
    std::size_t size = 0;
    const bool found = GetResource(name, data, size);
    out.clear();  // not before the search: the name may be the text of `out`
    if (size != 0) out.append(data, size);
    return found;
}

}  // namespace xo
