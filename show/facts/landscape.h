#pragma once

// The layout of "ballbg.jpg", the wide landscape behind the ball, in texels: its size, and how much of it the screen
// shows at a time, from the upper edge.

const int LANDSCAPE_WIDTH = 2048;
const int LANDSCAPE_HEIGHT = 512;
const int LANDSCAPE_SHOWN_WIDTH = 724;
const int LANDSCAPE_SHOWN_HEIGHT = 459;
