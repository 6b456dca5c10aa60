#pragma once

// The window that the show is made for, in pixels. Effects that copy the frame, or draw in a part of it, count on it.

const int FRAME_WIDTH = 800;
const int FRAME_HEIGHT = 600;
