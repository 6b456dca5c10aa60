// The configuration file of the runtime: what Base reads from it at the start and writes back at the end.

#include "tw_base.h"

#include "tw_device_sdl2d.h"
#include "tw_device_sdl3d.h"
#include "tw_exception.h"
#include "tw_hud.h"
#include "tw_minihud.h"

#include "am_videofile.h"
#include "fsound.h"
#include "script_loadxml.h"
#include "xml_parser.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace Tidewheel
{

namespace
{

const char CONFIGURATION_FILE[] = "tidewheel.xml";

// X windows and GL viewports end here.
const int MAX_WINDOW_SIZE = 16384;

// Decimal text as an int; text without a number is 0, and what no int can hold becomes the nearest one.
int toInt(const std::string& text)
{
    const long value = std::strtol(text.c_str(), nullptr, 10);
    return static_cast<int>(std::clamp<long>(value, INT_MIN, INT_MAX));
}

int atLeastOne(int value)
{
    return value > 0 ? value : 1;
}

// Seconds; text without a number, and words such as "nan" that are no point in time, are 0.
float toSeconds(const std::string& text)
{
    const float seconds = static_cast<float>(std::strtod(text.c_str(), nullptr));
    return std::isfinite(seconds) ? seconds : 0.0f;
}

void parse(Xml::XmlParser& parser, const AM::File& file)
{
    parser.parse(reinterpret_cast<const char*>(file->data), static_cast<int>(file->length));
}

// Sets an attribute on the first tag of a name. A document without such a tag gets one, at `added`.
void setOnFirst(Xml::XmlParser& parser, Xml::Iterator& added, const char* tagName, const char* attribute,
                const std::string& value)
{
    Xml::Iterator it = parser.createIterator(tagName);
    if (++it)
    {
        it->setValue(attribute, value);
        return;
    }

    Xml::XmlTag tag;
    tag.setName(tagName);
    tag.setClosed(true);
    tag.setValue(attribute, value);
    added.addChild(tag);
}

void setOnAll(Xml::XmlParser& parser, const char* tagName, const char* attribute, const std::string& value)
{
    Xml::Iterator it = parser.createIterator(tagName);
    while (++it) it->setValue(attribute, value);
}

} // namespace

void Base::load(const std::string& archive)
{
    addArchive(archive);
    mHUD = new HUD(mArchives);
    mMiniHUD = new MiniHUD(mArchives);

    const AM::File file = mArchives.readFile(CONFIGURATION_FILE, -1);
    if (file.isNull()) throw Exception("[Tidewheel] Could not load 'tidewheel.xml'");
    Xml::XmlParser parser;
    parse(parser, file);
    if (parser.getTag().mName != "demo") return; // `run` reports it: there is no window then

    for (Xml::IteratorConst it = parser.createIterator("time"); ++it;) mStartTime = toSeconds(it->getValue("start"));
    for (Xml::IteratorConst it = parser.createIterator("hud"); ++it;)
        if (it->getValue("mini") == "on") mMiniHUD->mVisible = true;
    for (Xml::IteratorConst it = parser.createIterator("window"); ++it;) loadWindow(*it.operator->());
    for (Xml::IteratorConst it = parser.createIterator("archive"); ++it;) mArchives.addArchive(it->getValue("file"));
    for (Xml::IteratorConst it = parser.createIterator("music"); ++it;) loadMusic(*it.operator->());
    for (Xml::IteratorConst it = parser.createIterator("script"); ++it;) loadScript(*it.operator->());

    Xml::IteratorConst videoDump = parser.createIterator("videodump");
    if (++videoDump) loadVideoDump(*videoDump.operator->());

    mLoaded = true;
}

void Base::loadWindow(const Xml::XmlTag& tag)
{
    const std::string& caption = tag.getValue("caption");
    const int width = toInt(tag.getValue("width"));
    const int height = toInt(tag.getValue("height"));
    mFullscreen = tag.getValue("mode") == "fullscreen";
    const bool openGL = tag.getValue("type") == "opengl";

    std::printf("Opening window ['%s'][%dx%d][%s][%s]\n", caption.c_str(), width, height,
                mFullscreen ? "Fullscreen" : "Windowed", openGL ? "OpenGL" : "Software");

    // SDL would take 0 for the size of the whole screen.
    if (width < 1 || height < 1 || width > MAX_WINDOW_SIZE || height > MAX_WINDOW_SIZE)
        throw Exception("[Tidewheel] The window in 'tidewheel.xml' needs a width and a height from 1 to %d (%dx%d)",
                        MAX_WINDOW_SIZE, width, height);

    // SDL has one window: that of an earlier tag goes before this one comes.
    delete mDevice;
    mDevice = nullptr;
    if (openGL)
        mDevice = new DeviceSDL3D;
    else
        mDevice = new DeviceSDL2D;
    mDevice->open(caption, width, height, mFullscreen);
}

void Base::loadMusic(const Xml::XmlTag& tag)
{
    // The stream of an earlier tag must be gone before its memory is.
    closeMusic();

    mMusicFile = tag.getValue("file");
    mMute = tag.getValue("mute") == "on";

    const float neededVersion = 3.73f;
    if (FSOUND_GetVersion() < neededVersion)
        throw Exception("[Tidewheel] FMOD-ERROR; You are using the wrong DLL version!  You should be using FMOD %.02f",
                        static_cast<double>(neededVersion));

    mMusicData = mArchives.readFile(mMusicFile, -1);
    if (mMusicData.isNull()) throw Exception("[Tidewheel] Could not find music in '%s'", mMusicFile.c_str());

    const unsigned int mode = FSOUND_LOADMEMORY | FSOUND_MPEGACCURATE;
    if (FSOUND_Init(44100, 32, FSOUND_INIT_GLOBALFOCUS))
    {
        mStream = FSOUND_Stream_Open(reinterpret_cast<const char*>(mMusicData->data), mode, 0,
                                     static_cast<int>(mMusicData->length));
        if (mStream) return;
    }

    const int code = FSOUND_GetError();
    FSOUND_Close();
    throw Exception("[Tidewheel] FMOD-ERROR; %s", FMOD_ErrorString(code));
}

void Base::loadScript(const Xml::XmlTag& tag)
{
    mScriptFile = tag.getValue("file");
    const AM::File file = mArchives.readFile(mScriptFile, -1);
    if (file.isNull()) throw Exception("[Tidewheel] Could not find the scriptfile '%s'", mScriptFile.c_str());

    // A script that is none leaves the timeline as it was, and the show ends at once.
    Script::LoadXML loader;
    loader.loadMem(reinterpret_cast<const char*>(file->data), file->length, mScriptEngine);
    mHUD->setScriptEngine(&mScriptEngine);
}

void Base::loadVideoDump(const Xml::XmlTag& tag)
{
    if (!mDevice) throw Exception("[Tidewheel] There is no window tag in 'tidewheel.xml'");

    AM::VideoFile::Format format;
    format.width = mDevice->getWidth();
    format.height = mDevice->getHeight();
    format.frameRate = toInt(tag.getValue("fps"));
    format.frameRateBase = atLeastOne(toInt(tag.getValue("fpsbase")));
    mFrameSkip = atLeastOne(toInt(tag.getValue("frameskip")));
    mVideoFile = AM::VideoFile::createForWrite(tag.getValue("name"), format, &mScreenshotArchives);
}

void Base::save()
{
    // Read anew, so that whatever the program does not own in the file survives.
    const AM::File file = mArchives.readFile(CONFIGURATION_FILE, -1);
    if (file.isNull()) throw Exception("[Tidewheel] Could not load 'tidewheel.xml'");
    Xml::XmlParser parser;
    parse(parser, file);
    if (parser.getTag().mName != "demo") return;

    char start[64];
    std::snprintf(start, sizeof start, "%.2f", static_cast<double>(mStartTime));
    Xml::Iterator added = parser.createIterator("");
    setOnFirst(parser, added, "time", "start", start);
    setOnAll(parser, "music", "mute", mMute ? "on" : "off");
    setOnAll(parser, "window", "mode", mFullscreen ? "fullscreen" : "windowed");
    setOnFirst(parser, added, "hud", "mini", mMiniHUD->mVisible ? "on" : "off");

    std::string text;
    parser.write(text, "\t");
    writeText(CONFIGURATION_FILE, text);
}

// Writes a text into the first data archive. If that cannot be written, the text is lost without a word: the show goes
// on, or has ended.
void Base::writeText(const std::string& name, const std::string& text)
{
    AM::File file(new AM::FileStructure);
    file->filename = name;
    file->length = static_cast<long>(text.size());
    file->data = new unsigned char[text.size()];
    std::memcpy(file->data, text.data(), text.size());
    mArchives.writeFile(file, -1);
}

} // namespace Tidewheel
