#pragma once

#include "builder.h"

namespace Scenes
{

// A flight over a glacier, down into a crevasse and along it to the heart that beats in the ice at its end. 66 seconds.
// The heart's mesh comes from the folder `models`.
void buildAvgrund(Builder& builder, const std::string& models);

// A cathedral hall, frozen over, with a podium in its choir; above it moves the node "metaball", at whose place the
// metaballs are drawn. 70 seconds.
void buildKatedral(Builder& builder, const std::string& models);

} // namespace Scenes
