#pragma once

#include "tw_events.h"

#include "script_script.h"

#include "am.h"

#include <string>

struct FSOUND_STREAM;

namespace AM
{
class Image;
class VideoFile;
} // namespace AM

namespace Xml
{
class XmlTag;
}

namespace Tidewheel
{

class DeviceSDL;
class Effect;
class HUD;
class MiniHUD;

// The runtime: owns the archives, the timeline, the window, the HUDs, the music and the frame dumper, and runs the
// show. Use: addArchive for each place where data lies, `load`, addEffect for each effect, `run`.
//
// The rule of time: while playing, the clock is the wall clock, set by the position that the stream reports at each
// seek and never read from the stream in between, so that the picture runs on even if the sound stutters. While paused
// it stands at mPauseTime. While dumping frames it moves by one fixed step a frame.
class Base
{
public:
    Base();
    Base(const Base&) = delete;
    Base& operator=(const Base&) = delete;

    // Writes the settings back if `load` had finished, silences and closes the music if it is still open, and closes
    // the window. The effects must be gone by now. A failure to write the settings is thrown, once everything is
    // closed; while another exception is on its way it goes to standard error instead.
    ~Base() noexcept(false);

    // Registers an effect, which is not owned, under the name that scripts use. The same name again replaces it.
    void addEffect(const std::string& name, Effect* effect);

    // Adds a place to search for data, behind those already added. An empty name is ignored.
    void addArchive(const std::string& uri);

    // Adds a place for screenshots and dumped frames; the first one is written to. An empty name is ignored.
    void addScreenshotArchive(const std::string& uri);

    // Reads the configuration "tidewheel.xml" and does all it says: opens the window and the music, reads the script,
    // creates the HUDs and the frame dumper. `archive` is one more archive name, or empty. Called once. Throws a
    // Tidewheel::Exception that names what is missing or wrong.
    void load(const std::string& archive);

    // Writes the settings that can change while the show runs back into the configuration; the rest of it stays.
    void save();

    // The show time in seconds, never below 0 while it runs. It can run for 24 days from wherever it was sought to.
    float getMusicTime() const;

    // Moves the show to a position in the music, in seconds; behind the end of the music too. While paused only the
    // clock moves; else the stream seeks in whole milliseconds and the clock follows the position it reports.
    void setMusicTime(float seconds);

    // Throws unless `load` brought a window that the show can be drawn in and, where frames are dumped, read from.
    // Without one there is no GL context, so this comes before any effect is made.
    void checkWindow() const;

    // Sets up all effects behind the loading screen and plays the show to its end. Throws whatever an effect throws,
    // "User aborted!" if the user leaves while effects are being set up, and what checkWindow throws.
    void run();

    AM::ArchiveManager mArchives;           // configuration, script, music, pictures, scenes
    AM::ArchiveManager mScreenshotArchives; // screenshots and dumped frames
    Script::ScriptEngine mScriptEngine;     // the timeline
    std::string mMusicFile;
    AM::File mMusicData;     // the stream plays from this memory: it must stay until that is closed
    std::string mScriptFile; // also the name that Ctrl+S writes to
    FSOUND_STREAM* mStream;  // owned; null without music
    float mPauseTime;        // seconds; time at the last seek or pause, and the clock while paused
    bool mPaused;
    bool mMute;
    bool mLoaded;       // `load` has finished: there are settings to save
    bool mFullscreen;   // wanted; the device is brought to it at the end of each frame
    int mLastHudTicks;  // milliseconds; when the HUDs last got a time event
    float mStartTime;   // seconds; where the show begins and P jumps to
    float mFrameTime;   // seconds; running average
    DeviceSDL* mDevice; // owned; null until `load`
    Events mEvents;
    Effect* mLoadingEffect;    // shown during setup; not owned, null for a plain bar
    HUD* mHUD;                 // owned; null until `load`
    MiniHUD* mMiniHUD;         // owned; null until `load`
    int mTimeOffset;           // milliseconds; tick count at which the show time is 0
    AM::VideoFile* mVideoFile; // owned; null unless frames are dumped
    int mFrameSkip;            // drawn frames for each dumped one

private:
    struct Loop;

    void loadWindow(const Xml::XmlTag& tag);
    void loadMusic(const Xml::XmlTag& tag);
    void loadScript(const Xml::XmlTag& tag);
    void loadVideoDump(const Xml::XmlTag& tag);
    void closeMusic();

    void setupEffects();
    void showLoading(int index);
    void startMusic();
    void runFrame(Loop& loop);
    void processInput(Loop& loop);
    void processKey(const Event& event, Loop& loop);
    void processStartKey(const Event& event);
    void seek(const Event& event, float direction);
    void togglePause();
    void saveScript();
    void writeScreenShot(AM::Image& image);
    void advanceTime(Loop& loop);
    void updateHUDs(Loop& loop);
    void dumpFrame(Loop& loop);
    bool sizeImage(AM::Image& image) const;
    void writeText(const std::string& name, const std::string& text);
};

} // namespace Tidewheel
