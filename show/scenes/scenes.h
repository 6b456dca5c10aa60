#pragma once

#include "builder.h"
#include "follow.h"

namespace Scenes
{

// A flight over a glacier, down into a crevasse and along it to the heart that beats in the ice at its end. 66 seconds,
// and the heart alone from there on. The heart's mesh comes from the folder `models`.
void buildAvgrund(Builder& builder, const std::string& models, const Showing& showing);

// A cathedral hall, frozen over, with a podium in its choir; above it moves the node "metaball", at whose place the
// metaballs are drawn. 80 seconds.
void buildKatedral(Builder& builder, const Showing& showing);

} // namespace Scenes
