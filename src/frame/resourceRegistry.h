// The life of the resource registry, as start-up and shut-down run it.
#ifndef XO_FRAME_RESOURCEREGISTRY_H
#define XO_FRAME_RESOURCEREGISTRY_H

namespace xo::frame {

// Makes the registry, empty and without a lock, unless a module has registered something before.
void createResourceRegistry();

// Gives it its lock, and makes it if need be.
void makeResourceRegistryThreadSafe();

// First the lock goes, then the entries.
void destroyResourceRegistry();

}  // namespace xo::frame

#endif
