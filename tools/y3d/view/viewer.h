#pragma once

#include "view/viewcamera.h"
#include "view/viewscene.h"
#include "view/viewwindow.h"

#include <memory>
#include <string>

// What the command line asked for.
struct ViewSettings
{
    ViewScene::Source source;
    std::string camera; // name, or "" for the file's first, or free where there is none
    float time = 0;     // seconds
    int width = 1024;
    int height = 768;
    bool isWireframe = false;
    bool hasBoxes = false;
};

// A scene that is looked at: plays it in a window until the user has seen enough, or draws single pictures.
class Viewer
{
public:
    // Opens the window and loads the file. Throws what the window and the scene throw, and y3d::Exception for a camera
    // that is not in the scene.
    Viewer(const ViewSettings& settings, bool isInteractive);

    // Plays until the window is closed.
    void run();
    // The picture of the scene at the settings' time, as PNG.
    void writePicture(const std::string& filename);
    // A sheet of `count` pictures from all round.
    void writeTurntable(const std::string& filename, int count);

private:
    void readInput();
    void processKey(const ViewInput& input);
    void drag(const ViewInput& input);
    void flyWithKeys(float seconds);
    void chooseNextCamera();
    void goFree();
    void jumpTo(float time);
    void reload();
    bool hasFileChanged();
    void draw();
    std::string title() const;
    std::vector<unsigned char> readPixels() const;

    ViewSettings mSettings;
    ViewWindow mWindow;
    std::unique_ptr<ViewScene> mScene;
    ViewCamera mFree;
    std::string mCamera; // the scene's camera that is looked through, or "" for the free one
    float mTime;
    bool mIsPaused = false;
    bool mHasEnded = false;
    int mMouseX = 0;
    int mMouseY = 0;
    std::string mMarked;  // the node under the mouse
    std::string mTrouble; // why the file on disk is not the one that is shown
    std::string mStamp;   // of the file that was loaded last
    std::string mSeen;    // of the file when it was looked at last
    float mFrameRate = 0;
};
