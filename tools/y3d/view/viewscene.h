#pragma once

#include "fe_camera.h"
#include "fe_sorrel.h"

#include "mb_aabbpointsf.h"

#include <memory>
#include <string>
#include <vector>

// A scene file in the show's own renderer, with what a viewer needs to know of it. A scene without a light is lit from
// the camera. Needs a current GL context.
class ViewScene
{
public:
    // How a file is found and looked at. Without a picture folder that of the file is taken, with what a description
    // beside it (FILE.xml) says; without a name the file's first scene.
    struct Source
    {
        std::string file;
        std::string pictures; // ends in a slash unless empty
        std::string name;
    };

    // Loads the file as the player would. Throws what the engine throws for what it refuses.
    explicit ViewScene(const Source& source);
    ViewScene(const ViewScene&) = delete;
    ViewScene& operator=(const ViewScene&) = delete;

    // Brings everything to a time in seconds and looks through a camera of the scene, or through `camera` if there is
    // none of this name ("" for that). `aspect` is the picture's width by its height.
    void moveTo(float time, const std::string& name, const Fennel::Camera& camera, float aspect);

    // Draws the scene at the time it was moved to; `wireframe` draws edges alone.
    void draw(bool wireframe);

    // Draws the boxes of all meshes, the one of `marked` (or null) brighter.
    void drawBoxes(const Fennel::Sorrel::Node* marked) const;

    // The node whose mesh was drawn at a place in the window, in pixels from its top left corner, or null. To be called
    // after draw() and before anything else is drawn.
    const Fennel::Sorrel::Node* nodeAt(int x, int y, int width, int height) const;

    // The camera that the last frame was seen through.
    const Fennel::Camera& getCamera() const { return mCamera; }
    // Around all meshes at the time of the last moveTo(); around the origin where there is none.
    MathBase::AABBpointsf getBox() const;

    std::vector<std::string> mCameras; // names in the file's order; the first is the player's view
    bool mHasLights;
    float mEnd;         // seconds; where the last key of a curve lies
    int mTriangles = 0; // of all placed meshes
    int mNodes = 0;     // with a mesh

private:
    Fennel::Sorrel::Engine mEngine;
    Fennel::Camera mCamera;
};
