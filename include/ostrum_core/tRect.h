// tRect.h -- a rectangle of four ints: left, top, right, bottom (pixels, y growing downwards on
// screen; both corners are vertices of what is drawn).
#pragma once

struct tRect {
    int left;
    int top;
    int right;
    int bottom;
};
