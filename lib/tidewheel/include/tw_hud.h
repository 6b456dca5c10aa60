#pragma once

#include "tw_hudbase.h"

#include <string>
#include <vector>

namespace Script
{
class Effect;
class ScriptEngine;
class Spline;
class Trigger;
} // namespace Script

namespace Tidewheel
{

// How the timeline view shows one top-level entry.
struct EffectStatus
{
    bool mExpanded = false; // its triggers and splines have rows of their own
};

// The timeline, shown and edited while it runs. A scrolling list has one row for each top-level entry and, below an
// expanded one, a row for each trigger and a taller one for each spline. At the right of the names lies a time axis
// that follows the clock; at the bottom stand the clock and the numbers of the selected row.
//
// The editor works by keyboard in three states. Browsing moves the selection through the list, and its Ctrl commands
// make and delete things. Editing stays on the row and moves what is picked in it: an end of the entry, a firing of the
// trigger, a key of the spline. A text field takes all keys until Return. There is no copy of the timeline: edits
// change the objects that the show runs on, and act on its next frame.
class HUD : public HUDBase
{
public:
    // Paints the frame with the logo "tidewheel_logo.png" in it. Throws if the font or the logo is missing.
    explicit HUD(AM::ArchiveManager& archive);

    // Shows `engine`, which is not owned and must outlive the display, from its top, all entries collapsed. Call it
    // again when entries were added other than by the display itself. Null shows an empty list.
    void setScriptEngine(Script::ScriptEngine* engine);

    // Seconds for each pixel of the time axis. It depends on the zoom.
    float getTimePerPixel() const;

    void redraw() override;

    // Takes key and time events, and redraws if there were any events.
    void processEvents(Events& events) override;

    // These paint a row of the list, whose top stands at row `y` of the scrolling area, and return its height. The
    // selected row also writes its status line. `effectStart`: the start of the entry in seconds.
    int drawEffect(const Script::Effect& effect, EffectStatus& status, int y, bool selected);
    int drawTrigger(const Script::Effect& effect, const Script::Trigger& trigger, float effectStart, int y,
                    bool selected);
    int drawSpline(const Script::Effect& effect, const Script::Spline& spline, float effectStart, int y, bool selected);

    // Scrolls as far as needed to show the selected row.
    void recalculateVerticalScrolling();

    // Write the numbers of the selected row into the status box; nothing if the row is of another kind.
    void writeEffectStatus();
    void writeTriggerStatus();
    void writeSplineStatus();

    Script::ScriptEngine* mScriptEngine; // not owned; the timeline shown
    int mCurrentEffect;                  // index of the selected entry
    int mCurrentRow;                     // 0: the entry itself; then its triggers, then its splines
    int mCurrentPart;                    // picked in edit mode: 0 start, 1 whole, 2 end; or firing, or key
    bool mStripe;                        // shade of the row being painted
    bool mEditMode;
    std::vector<EffectStatus> mEffectStatus; // parallel to the top-level entries
    float mCursor;                           // seconds from mWindowStart to the clock
    float mWindowLength;                     // seconds shown across the axis
    float mWindowStart;                      // seconds; left end of the axis
    float mTime;                             // seconds; from the last time event, as the next two
    float mStartTime;                        // seconds; where the show begins
    float mFps;                              // frames per second
    std::string* mTextField;                 // not owned; the text being typed, with a caret at its end, or null

private:
    struct Span;

    Span getSpan(const Script::Effect& effect) const;
    bool isHidden(int y, int height, int reach = 0) const;
    void drawFrame();
    void drawSheet(int edge, std::uint32_t colour);
    void drawLogo();
    int drawDetails(const Script::Effect& effect, int y, bool selected);
    void drawFirings(const Script::Trigger& trigger, float effectStart, int y, bool selected);
    void drawCurve(const Script::Spline& spline, const Span& span, float effectStart, int y, float divisor);
    void drawKeys(const Script::Spline& spline, float effectStart, int y, bool selected, float divisor);
    void drawClockLines();
    void drawClock();
    void clearStatus(std::uint32_t colour);
    void drawStatus(const std::string& text, int column, int line, std::uint32_t colour = 0xFFFFFFFF);

    Script::Effect* getCurrentEffect() const;
    Script::Trigger* getCurrentTrigger() const;
    Script::Spline* getCurrentSpline() const;
    int getLastPart() const;
    void keepSelectionInside();

    void processTime(const Event& event);
    void processTextField(const Event& event);
    void processKey(const Event& event);
    void processCommand(const Event& event);
    void processEdit(const Event& event);
    void processMovement(const Event& event);
    void processZoom(const Event& event);

    void swapEffects(int other);
    void newEffect();
    void newTrigger(Script::Effect& effect);
    void newSpline(Script::Effect& effect);
    void deleteSelected();
    void changeSplineType(Script::Spline& spline);
    void openTextField(std::string& text);
    void editEffect(Script::Effect& effect, const Event& event);
    void editTrigger(Script::Trigger& trigger, const Event& event);
    void editSpline(Script::Spline& spline, const Event& event);
    void insertKey(Script::Spline& spline);
    void deleteKey(Script::Spline& spline);
    void moveKeyRight(Script::Spline& spline);
    void moveKeyLeft(Script::Spline& spline);
    void selectLastRow(int index);
};

} // namespace Tidewheel
