// Random authors: they play the whole runtime with random keys, seeks, pauses, saves and reloads, over empty, small,
// large, odd and damaged scripts, with and without the displays. Time is made up, so that a seed always gives the same
// run. After every batch of frames the timeline, the displays' pictures and what would be saved are looked at.
//
//   tidewheel_soak [EVENTS [SEED]]

#include "tw_base.h"
#include "tw_device_sdl.h"
#include "tw_effect.h"
#include "tw_exception.h"
#include "tw_hud.h"
#include "tw_minihud.h"
#include "tw_show.h"
#include "tw_standins.h"

#include "script_loadxml.h"
#include "script_savexml.h"
#include "xml_parser.h"

#include <SDL.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

const int BATCH = 20; // frames between two looks

const std::vector<int> KEYS = {
    // the editor's
    SDLK_RETURN, SDLK_RETURN, SDLK_UP, SDLK_UP, SDLK_UP, SDLK_DOWN, SDLK_DOWN, SDLK_DOWN, SDLK_DOWN, SDLK_LEFT,
    SDLK_LEFT, SDLK_RIGHT, SDLK_RIGHT, SDLK_RIGHT, SDLK_RIGHT, SDLK_INSERT, SDLK_INSERT, SDLK_DELETE, SDLK_DELETE,
    SDLK_F2, SDLK_F3, SDLK_F4, SDLK_KP_PLUS, SDLK_KP_MINUS, SDLK_n, SDLK_o, SDLK_t, SDLK_v, SDLK_BACKSPACE, SDLK_LESS,
    SDLK_AMPERSAND, SDLK_a,
    // the runtime's
    SDLK_PAGEUP, SDLK_PAGEDOWN, SDLK_PAGEDOWN, SDLK_p, SDLK_s, SDLK_m, SDLK_f, SDLK_SPACE};

const char SMALL[] =
    "<script><effect name='known' start='1' end='900'><trigger name='t'/><trigger name='u' value='7'/>"
    "<spline name='s' type='linear'><key/><key time='4' value='2'/></spline></effect>"
    "<effect name='other' start='3' end='4'/><effect name='c' state='off' start='5' end='6'/></script>";

std::string oddScript()
{
    const std::string name(3000, 'm');
    return "<script><effect name='" + name + "' start='9' end='3'><trigger name='" + name + "' value='" + name +
           "' repeat='1000000' delay='0.0001'/><trigger start='-inf' repeat='-3'/><trigger repeat='5' delay='nan'/>"
           "<spline timescale='0' valuescale='0'><key/><key time='1' value='1'/></spline><spline name='" +
           name +
           "' type='bezier' valuescale='1e38'><key time='nan' value='inf'/><key value='nan'/><key value='-1e38'/>"
           "</spline><spline type='linear' timeoffset='inf'><key/></spline></effect>"
           "<effect name='known' start='-inf' end='inf'><spline timescale='1e-40'><key value='5'/></spline></effect>"
           "<effect name='known' start='nan' end='nan'><trigger/><effect name='known'/></effect></script>";
}

std::string largeScript()
{
    std::string text = "<script>";
    for (int i = 0; i < 120; ++i)
    {
        const std::string start = std::to_string(i);
        text += "<effect name='" + std::string(i % 3 ? "known" : "other") + "' start='" + start + "' end='" + start +
                "00'><trigger name='beat' repeat='40' delay='0.47'/><trigger name='colour' value='1 2 3'/>"
                "<spline name='height' type='smooth'><key/><key time='4' value='2'/><key time='9' value='-1'/></spline>"
                "<effect name='known' start='1' end='2'><trigger name='inner'/></effect></effect>";
    }
    return text + "</script>";
}

void require(bool condition, const char* what)
{
    if (!condition) throw std::logic_error(what);
}

bool same(float a, float b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

// Scripts hold neither a repeat below 1 nor the delay of a single firing.
bool same(const Script::Trigger& a, const Script::Trigger& b)
{
    return a.mName == b.mName && a.mValue == b.mValue && same(a.mStart, b.mStart) &&
           std::max(a.mRepeat, 1) == b.mRepeat && (b.mRepeat == 1 || same(a.mDelay, b.mDelay));
}

bool same(const Script::Spline::Key& a, const Script::Spline::Key& b)
{
    return same(a.time, b.time) && same(a.value, b.value);
}

template <class Item> bool same(const std::vector<Item*>& a, const std::vector<Item*>& b);

bool same(const Script::Spline& a, const Script::Spline& b)
{
    return a.mName == b.mName && a.mType == b.mType && same(a.mTimeOffset, b.mTimeOffset) &&
           same(a.mTimeScale, b.mTimeScale) && same(a.mValueOffset, b.mValueOffset) &&
           same(a.mValueScale, b.mValueScale) && same(a.mKeys, b.mKeys);
}

bool same(const Script::Effect& a, const Script::Effect& b)
{
    return a.mName == b.mName && a.mEnabled == b.mEnabled && same(a.mStart, b.mStart) && same(a.mEnd, b.mEnd) &&
           same(a.mTriggers, b.mTriggers) && same(a.mSplines, b.mSplines) && same(a.mEffects, b.mEffects);
}

template <class Item> bool same(const std::vector<Item*>& a, const std::vector<Item*>& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const Item* left, const Item* right) { return same(*left, *right); });
}

class Idle : public Tidewheel::Effect
{
public:
    void setup(AM::ArchiveManager&) override {}
    void setupInternal(Tidewheel::DeviceSDL*, AM::ArchiveManager*) override {}
    void update(float, float, float) override {}
};

// What the authors have done so far.
struct Soak
{
    std::mt19937 random;
    long events = 0;            // given to the runtime
    long wanted = 0;            // events in all
    long looks = 0;             // batches looked at
    long sessions = 0;          // loads, from a new script or from what the last session left
    long refused = 0;           // of them, scripts that could not be read
    std::uint32_t pictures = 0; // checksum of all pictures looked at

    unsigned below(unsigned count) { return random() % count; }
};

// The display device as an author's desk: it gives random input, looks at the show between batches, and shows nothing.
class Desk : public Tidewheel::DeviceSDL
{
public:
    Desk(Tidewheel::Base& base, Soak& soak)
        : mBase(base), mSoak(soak), mFresh(base.mArchives), mLast(soak.events + 200 + soak.below(4000))
    {
        mWidth = 4;
        mHeight = 2;
        mHaste = soak.below(2) ? 400 : 20;
    }

    void updateEvents(Tidewheel::Events& events) override
    {
        StandIn::gTicks += mSoak.below(500) ? mSoak.below(mHaste) : 60000;
        if (mSoak.events >= std::min(mLast, mSoak.wanted))
        {
            mBase.mHUD->mVisible = false;
            events.append(keyDown(SDLK_ESCAPE));
            return;
        }
        for (unsigned count = mSoak.below(Tidewheel::Events::CAPACITY + 1); count > 0; --count)
            events.append(makeEvent());
        mSoak.events += events.count;
    }

    void endFrame() override
    {
        if (++mFrame % BATCH == 0) look();
    }

    void open(const std::string&, int, int, bool) override {}
    void setFullscreen(bool fullscreen) override { mFullscreen = fullscreen; }
    bool isFullscreen() const override { return mFullscreen; }
    void beginFrame() override {}
    void displayHUD(Tidewheel::HUD&) override {}
    void displayMiniHUD(Tidewheel::MiniHUD&) override {}
    void displayLoadingBar(float) override {}

private:
    Tidewheel::Event makeEvent()
    {
        if (mHeld > 0)
        {
            --mHeld;
            return mLastEvent;
        }
        if (mSoak.below(10) == 0) mHeld = mSoak.below(15);

        Tidewheel::Event event = keyDown(KEYS[mSoak.below(static_cast<unsigned>(KEYS.size()))]);
        event.ctrl = mSoak.below(2) != 0;
        event.alt = mSoak.below(8) == 0;
        event.shift = mSoak.below(8) == 0;
        const unsigned kind = mSoak.below(300);
        if (kind == 0)
            event.type = Tidewheel::EVENT_QUIT;
        else if (kind == 1)
            event.key = SDLK_ESCAPE;
        else if (kind < 4 || (kind < 20 && !mBase.mHUD->mVisible))
            event.key = SDLK_TAB;
        else if (kind < 30)
            event.type = Tidewheel::EVENT_KEYUP;
        else if (kind < 40)
            event.key = static_cast<int>(mSoak.below(600));
        if ((event.key & 0xFF) == '"') event.key = SDLK_UP; // scripts cannot hold a double quote
        return mLastEvent = event;
    }

    void look()
    {
        ++mSoak.looks;
        lookAtTimeline();
        lookAtPictures();
        Script::SaveXML writer;
        const std::string saved = writer.saveMem(mBase.mScriptEngine);
        Script::ScriptEngine again;
        require(Script::LoadXML().loadMem(saved.data(), static_cast<long>(saved.size()), again), "saved, not loaded");
        require(same(mBase.mScriptEngine.mEffects, again.mEffects), "what was saved reads back as something else");
        require(writer.saveMem(again) == saved, "saved again, the text is another");
    }

    void lookAtTimeline()
    {
        const Tidewheel::HUD& hud = *mBase.mHUD;
        const std::vector<Script::Effect*>& effects = mBase.mScriptEngine.mEffects;
        bool isOpen = hud.mTextField == nullptr;
        for (const Script::Effect* effect : effects)
        {
            isOpen = isOpen || hud.mTextField == &effect->mName;
            for (const Script::Trigger* trigger : effect->mTriggers)
            {
                isOpen = isOpen || hud.mTextField == &trigger->mName || hud.mTextField == &trigger->mValue;
                require(trigger->mFired >= 0, "a trigger that has fired less than never");
            }
            for (const Script::Spline* spline : effect->mSplines)
            {
                isOpen = isOpen || hud.mTextField == &spline->mName;
                require(!spline->mKeys.empty(), "a spline without keys");
            }
        }
        require(isOpen, "the text field types into nothing of the timeline");
        require(!hud.mTextField || hud.mTextField->back() == '|', "a text field without a caret");

        require(!hud.mVisible || hud.mEffectStatus.size() == effects.size(), "an entry without a row");
        if (!hud.mVisible || effects.empty()) return;
        require(hud.mCurrentEffect >= 0 && hud.mCurrentEffect < static_cast<int>(effects.size()), "no such entry");
        const Script::Effect& effect = *effects[static_cast<std::size_t>(hud.mCurrentEffect)];
        const std::size_t rows = effect.mTriggers.size() + effect.mSplines.size();
        require(hud.mCurrentRow >= 0 && hud.mCurrentRow <= static_cast<int>(rows), "no such row");
        require(hud.mCurrentPart >= 0, "no such part");
    }

    // The frame is painted once, so that whatever goes over it stays.
    void lookAtPictures()
    {
        const Tidewheel::HUD& hud = *mBase.mHUD;
        for (int y = 0; y < hud.mHeight; ++y)
            for (int x = 0; x < hud.mWidth; ++x)
            {
                const std::uint32_t pixel = hud.mData[y * hud.mWidth + x];
                mSoak.pictures = mSoak.pictures * 16777619u ^ pixel;
                if (y < 30 || y >= 510 || x < 2 || x >= 510)
                    require(pixel == mFresh.mData[y * hud.mWidth + x], "the frame of the HUD is not whole");
            }
        const Tidewheel::MiniHUD& mini = *mBase.mMiniHUD;
        for (int x = 0; x < mini.mWidth; ++x)
            require(mini.mData[x] == mini.mData[0] && mini.mData[31 * mini.mWidth + x] == mini.mData[0],
                    "the edge of the mini HUD is not whole");
    }

    Tidewheel::Base& mBase;
    Soak& mSoak;
    Tidewheel::HUD mFresh; // its frame is whole
    long mLast;            // the count of events after which the author leaves
    Tidewheel::Event mLastEvent;
    unsigned mHeld = 0; // how often the last key is still to repeat
    unsigned mHaste;    // milliseconds, the most that a frame takes
    long mFrame = 0;
};

std::string makeScript(Soak& soak)
{
    const std::string scripts[] = {"<script></script>", SMALL, largeScript(), oddScript()};
    std::string text = scripts[soak.below(4)];
    if (soak.below(5) != 0) return text;
    for (unsigned damages = 1 + soak.below(3); damages > 0; --damages)
        text[soak.below(static_cast<unsigned>(text.size()))] = "<>/'= x-."[soak.below(9)];
    return text;
}

// One author, from the loading of a show to its end.
void playSession(const ShowFolder& folder, Soak& soak)
{
    ++soak.sessions;
    if (soak.sessions == 1 || soak.below(2) == 0)
    {
        const std::string music = soak.below(2) ? "<music file='track'/>" : "";
        const std::string mini = soak.below(2) ? "<hud mini='on'/>" : "";
        folder.write("script.xml", makeScript(soak));
        folder.write("tidewheel.xml", "<demo>" + music + mini + "<script file='script.xml'/></demo>");
    }

    Idle known, other;
    Tidewheel::Base base;
    base.addArchive(folder.mPath);
    base.addScreenshotArchive(folder.mPath + "screenshots/");
    base.addEffect("known", &known);
    base.addEffect("other", &other);
    try
    {
        base.load("");
    }
    catch (const Xml::XmlException&)
    {
        ++soak.refused;
        folder.write("script.xml", SMALL); // the next one may go on from here
        return;
    }
    base.mDevice = new Desk(base, soak);
    base.mHUD->mVisible = soak.below(8) != 0;
    try
    {
        base.run();
    }
    catch (const Tidewheel::Exception& exception)
    {
        require(std::string(exception.what()) == "User aborted!", exception.what());
    }
}

} // namespace

int main(int count, char** arguments)
{
    Soak soak;
    soak.wanted = count > 1 ? std::atol(arguments[1]) : 100000;
    const unsigned long seed = count > 2 ? std::strtoul(arguments[2], nullptr, 10) : 1;
    soak.random.seed(static_cast<std::mt19937::result_type>(seed));
    std::printf("%ld events, seed %lu\n", soak.wanted, seed);
    std::fflush(stdout);

    int status = EXIT_SUCCESS;
    try
    {
        ShowFolder folder;
        folder.write("track", "music");
        std::filesystem::copy_file(HUD_DATA_FOLDER "tidewheel.font", folder.mPath + "tidewheel.font",
                                   std::filesystem::copy_options::overwrite_existing);
        while (soak.events < soak.wanted) playSession(folder, soak);
    }
    catch (const std::exception& exception)
    {
        std::printf("FAILED near event %ld, session %ld: %s\n", soak.events, soak.sessions, exception.what());
        status = EXIT_FAILURE;
    }
    std::printf("%ld events in %ld sessions, %ld scripts refused, %ld looks, pictures %08x\n", soak.events,
                soak.sessions, soak.refused, soak.looks, static_cast<unsigned>(soak.pictures));
    return status;
}
