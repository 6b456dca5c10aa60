#pragma once

#include "canvas.h"

namespace Paint
{

// One painter for each picture of the show.

Canvas overlay();     // frost and shade at the edges of the screen, alpha
Canvas logo();        // the group's name, 3:1, alpha
Canvas logoGhost();   // the same, blown apart, 3:1, alpha
Canvas banner();      // the show's name, 4:1, light on black
Canvas greetings();   // 16 rows of 32 texels, one name each, alpha
Canvas glyphRow();    // the letters of the flying texts, 10 texels each, alpha
Canvas ballScenery(); // ridges under an aurora, a wide strip
Canvas sunSpark();    // one warm spark, alpha
Canvas environment(); // what the metaballs mirror, a sphere map

// Surfaces of the scenes; they repeat without a seam.
Canvas iceSurface();
Canvas snowSurface();
Canvas ridgeSurface();
Canvas stoneSurface();
Canvas aisleSurface();
Canvas choirSurface();
Canvas floorSurface();
Canvas windowGlass();
Canvas roseWindow();
Canvas flameBody(); // from the tip in the first row to the root in the last
Canvas skyDome();   // repeats sideways alone

} // namespace Paint
