// Resources that are compiled into programs, by name. Their bytes belong to the code that registers them.
#include "xoSystem/xoResource.h"

#include <map>
#include <string>
#include <utility>

#include "concurrency/lateMutex.h"
#include "frame/resourceRegistry.h"
#include "xoSystem/xoLog.h"

namespace xo {
namespace {

struct View {
    const char* data = nullptr;
    std::size_t size = 0;
};

class Registry {
public:
    void makeThreadSafe() { mMutex.make(); }
    void unmakeThreadSafe() { mMutex.unmake(); }

    // The callers copy the name before the lock is taken: to read a bad pointer under it could leave it locked.

    // False, with nothing changed, when the name is taken.
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

Registry* registry = nullptr;

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

// Of two resources of one name the first one stays.
void rc::impl::RegisterResources(std::size_t count, const char* blob, const char* const* names,
                                 const std::size_t* sizes, const std::size_t* offsets) {
    if (!blob || !names || !sizes || !offsets) return;
    frame::createResourceRegistry();
    for (std::size_t i = 0; i < count; ++i)
        if (!names[i] || !registry->insert(names[i], {blob + offsets[i], sizes[i]}))
            report("Resource conflict ", names[i]);
}

void rc::impl::UnRegisterResources(std::size_t count, const char*, const char* const* names, const std::size_t*,
                                   const std::size_t*) {
    if (!registry || !names) return;
    for (std::size_t i = 0; i < count; ++i)
        if (!names[i] || !registry->erase(names[i])) report("Resource is already unregistered ", names[i]);
}

bool rc::GetResource(const char* name, const char*& data, std::size_t& size) {
    View view;
    const bool found = registry && name && registry->find(name, view);
    data = view.data;
    size = view.size;
    if (!found) report("Resource is missing ", name);
    return found;
}

bool rc::GetResource(const char* name, std::string& out) {
    const char* data = nullptr;
    std::size_t size = 0;
    const bool found = GetResource(name, data, size);
    out.clear();
    if (size != 0) out.append(data, size);
    return found;
}

}  // namespace xo
