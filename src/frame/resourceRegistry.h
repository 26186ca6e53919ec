// Creation and destruction of the resource registry, for start-up and shut-down.
#ifndef XO_FRAME_RESOURCEREGISTRY_H
#define XO_FRAME_RESOURCEREGISTRY_H

namespace xo::frame {

// Creates the registry, empty and without a lock, unless there is one: a module may have registered resources earlier.
void createResourceRegistry();

// Creates the registry if there is none, and its lock.
void makeResourceRegistryThreadSafe();

// Destroys the lock, then the entries. Nothing when there is no registry.
void destroyResourceRegistry();

}  // namespace xo::frame

#endif
