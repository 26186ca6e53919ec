#ifndef XO_FRAME_LANEMASKS_H
#define XO_FRAME_LANEMASKS_H

namespace xo::frame {

// Fills the exported lane masks.
void writeLaneMasks();

}  // namespace xo::frame

#endif
