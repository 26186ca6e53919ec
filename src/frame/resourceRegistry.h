// Creation and destruction of the resource registry, for start-up and shut-down.
#ifndef XO_FRAME_RESOURCEREGISTRY_H
#define XO_FRAME_RESOURCEREGISTRY_H

namespace xo::frame {

// Creates an empty registry without a lock, unless it exists: a module may have registered resources before. Creation
// and destruction are not synchronised: they happen while one thread uses the library.
void createResourceRegistry();

// Creates the registry if there is none, and its lock.
void makeResourceRegistryThreadSafe();

// Destroys the lock, then the entries. Does nothing when there is no registry.
void destroyResourceRegistry();

}  // namespace xo::frame

#endif
