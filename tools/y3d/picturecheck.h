#pragma once

#include <string>

// Why the player would not load a picture, or an empty text. It is read from `folder` with the player's own reader;
// without a folder only its name is looked at.
std::string faultOfPicture(const std::string& folder, const std::string& filename);
