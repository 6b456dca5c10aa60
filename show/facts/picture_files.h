#pragma once

// The pictures of the show, by the names under which makers write and effects and scenes read them. The build packs
// what stands here, a line each.

namespace PictureFiles
{

const char OVERLAY[] = "overlay.png";
const char LOGO[] = "sandrift.png";
const char LOGO_GHOST[] = "sandrift_ghost.png";
const char BANNER[] = "scenese.png";
const char GREETINGS[] = "greets.png";
const char FONT[] = "font.png";
const char LANDSCAPE[] = "ballbg.jpg";
const char SUN[] = "sun.png";
const char ENVIRONMENT[] = "env.png";

// Surfaces of the scenes.
const char ICE[] = "ice.png";
const char SNOW[] = "snow.png";
const char RIDGE[] = "ridge.png";
const char STONE[] = "stone.png";
const char AISLE[] = "aisle.png";
const char CHOIR[] = "choir.png";
const char FLOOR[] = "floor.png";
const char WINDOW[] = "window.png";
const char ROSE[] = "rose.png";
const char FLAME[] = "flame.png";
const char SKY[] = "sky.png";

} // namespace PictureFiles
