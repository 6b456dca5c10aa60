#pragma once

#include <string>
#include <vector>

#include "y3d_manager.h"

// A scene file in memory: its bytes and the objects read from them. Files are named as on the command line, with - for
// the standard input or output. All of it throws y3d::Exception with a text that names the file.

struct SceneFile
{
    // Reads a file. What the library prints on the standard output while it loads is kept away from there.
    explicit SceneFile(const std::string& filename);

    std::string name; // for messages
    std::vector<unsigned char> bytes;
    y3d::Manager manager;
};

// Tells on the standard error stream what of a file writing it again leaves out.
void tellLosses(const SceneFile& file);

// Writes the objects of a manager to a file.
void writeSceneFile(const y3d::Manager& manager, const std::string& filename);
