#include "tw_hud.h"

#include "tw_hudtext.h"

#include "script_script.h"

#include "am.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Tidewheel
{

namespace
{

const std::uint32_t WHITE = 0xFFFFFFFF;
const std::uint32_t BLACK = 0xFF000000;
const std::uint32_t BACKGROUND = 0xCC333344;
const std::uint32_t SHADE_A = 0xCC333344;
const std::uint32_t SHADE_B = 0xCC383849;
const std::uint32_t SELECTED_ROW = 0xEE004466;
const std::uint32_t EDITED_ROW = 0xEE000000;
const std::uint32_t PICKED = 0xFFFF0000;

const std::uint32_t EFFECT_BAR = 0xCC4477CC;
const std::uint32_t EFFECT_BAR_RUNNING = 0xCC99BBFF;
const std::uint32_t EFFECT_BAR_DISABLED = 0xCC000000;
const std::uint32_t EFFECT_BAR_UNKNOWN = 0xCC550000;
const std::uint32_t EFFECT_BAR_EDITED = 0xEE002277;
const std::uint32_t EFFECT_BAR_END = 0xCCFFFFFF;
const std::uint32_t TRIGGER_BAR = 0xCC003F00;
const std::uint32_t TRIGGER_BAR_EDITED = 0xEE002200;
const std::uint32_t SPLINE_BAR = 0xCC550000;
const std::uint32_t SPLINE_BAR_EDITED = 0xEE440000;

const std::uint32_t ENABLED_NAME = 0xEEFFFFFF;
const std::uint32_t DISABLED_NAME = 0xEE999999;
const std::uint32_t RUNNING_NAME = 0xEEEEBB33;
const std::uint32_t SPLINE_TYPE_TEXT = 0xFFAAAAAA;
const std::uint32_t TRIGGER_VALUE_TEXT = 0xFFFFFF00;

const std::uint32_t FIRING_DONE = 0xFF777777;
const std::uint32_t SPLINE_CURVE = 0xEE666666;
const std::uint32_t SPLINE_ZERO = 0xFFAA2222;
const std::uint32_t CLOCK_LINE = 0xFFFF0000;
const std::uint32_t START_LINE = 0xFF7777FF;

const int SIZE = 512;  // of the square picture
const int BORDER = 2;  // of the white frame around it
const int CORNER = 10; // radius of its upper corners
const int INNER_WIDTH = SIZE - 2 * BORDER;
const int LIST_TOP = 30; // the scrolling area
const int LIST_BOTTOM = 486;
const int LIST_HEIGHT = LIST_BOTTOM - LIST_TOP;
const int PAINTED_HEIGHT = 504; // no row is begun beyond this
const int AXIS_LEFT = 110;
const int AXIS_COLUMNS = 398;
const int AXIS_RIGHT = AXIS_LEFT + AXIS_COLUMNS;
const float AXIS_WIDTH = static_cast<float>(AXIS_COLUMNS);
const int NAME_WIDTH = AXIS_LEFT - BORDER; // the column of names, and the line that ends it
const int STATUS_TOP = LIST_BOTTOM + 1;    // the clock at the left, and the numbers of the selected row
const int STATUS_HEIGHT = SIZE - BORDER - STATUS_TOP;
const int CLOCK_WIDTH = 110;
const int ROW_HEIGHT = 12;
const int BAR_HEIGHT = 10; // of an entry, and of a mark on an axis
const int SPLINE_HEIGHT = 48;
const int SPLINE_MIDDLE = 23;     // of the spline's row: where its zero line stands
const float SPLINE_REACH = 22.0f; // rows from there to the largest value

// When a firing is due, as seconds on the axis.
float firingTime(const Script::Trigger& trigger, float base, float windowStart, int firing)
{
    return base + static_cast<float>(firing) * trigger.mDelay - windowStart;
}

// The first index from `first` up to `end` for which `condition` holds, `end` if there is none. From an index on for
// which it holds, it holds for all.
template <class Condition> int firstIndex(int first, int end, const Condition& condition)
{
    while (first < end)
    {
        const int middle = first + (end - first) / 2;
        if (condition(middle))
            end = middle;
        else
            first = middle + 1;
    }
    return first;
}

// How far from its zero line the curve can run, in rows. None of the four kinds of segment leaves the sum of what its
// keys and tangents are worth, as long as the keys are in order; otherwise there is no limit.
int reachOf(const Script::Spline& spline, float divisor)
{
    const float limit = 5e8f;
    float value = 0.0f;
    float tangent = 0.0f;
    for (std::size_t k = 0; k < spline.mKeys.size(); ++k)
    {
        const Script::Spline::Key& key = *spline.mKeys[k];
        if (k > 0 && !(key.time >= spline.mKeys[k - 1]->time)) return truncate(limit);
        value = std::max(value, std::fabs(key.value));
        tangent = std::max(tangent, std::fabs(key.tangent));
    }
    const float furthest = (3.0f * value + tangent) * std::fabs(spline.mValueScale) + std::fabs(spline.mValueOffset);
    const float rows = furthest * SPLINE_REACH / divisor + 2.0f;
    return truncate(rows < limit ? rows : limit);
}

} // namespace

// The part of an entry that lies in the window, in columns of the axis.
struct HUD::Span
{
    bool visible;
    float x0;
    float x1;

    int left() const { return AXIS_LEFT + truncate(x0); }
    int width() const { return truncate(x1 - x0); }
};

HUD::HUD(AM::ArchiveManager& archive)
    : HUDBase(archive), mScriptEngine(nullptr), mCurrentEffect(0), mCurrentRow(0), mCurrentPart(0), mStripe(false),
      mEditMode(false), mCursor(0.0f), mWindowLength(40.0f), mWindowStart(0.0f), mTime(0.0f), mStartTime(0.0f),
      mFps(0.0f), mTextField(nullptr)
{
    resize(SIZE, SIZE);
    mClipTop = LIST_TOP;
    mClipBottom = LIST_BOTTOM;
    drawFrame();
    drawLogo();
    drawBox(0, LIST_TOP - 2, SIZE, 1, WHITE, false);
    drawBox(0, LIST_BOTTOM, SIZE, 1, WHITE, false);
}

void HUD::setScriptEngine(Script::ScriptEngine* engine)
{
    mCursor = 0.0f;
    mWindowLength = 40.0f;
    mWindowStart = 0.0f;
    mScriptEngine = engine;
    mEditMode = false;
    mCurrentEffect = mCurrentRow = mCurrentPart = 0;
    mScroll = 0;
    mTextField = nullptr;
    mEffectStatus.assign(engine ? engine->mEffects.size() : 0, EffectStatus());
    redraw();
}

float HUD::getTimePerPixel() const
{
    return mWindowLength / AXIS_WIDTH;
}

// Is nothing to be seen of a row of this height, even if it reaches `reach` rows beyond itself?
bool HUD::isHidden(int y, int height, int reach) const
{
    return y + height + reach <= mScroll + mClipTop || y - reach >= mScroll + mClipBottom;
}

// A white sheet whose lower corners are filled, and a black one inside it, which leaves the border.
void HUD::drawFrame()
{
    drawSheet(0, WHITE);
    drawBox(0, SIZE - CORNER - BORDER, SIZE, CORNER + BORDER, WHITE, false);
    drawSheet(BORDER, BLACK);
}

// A sheet with round upper corners, `edge` pixels inside the picture.
void HUD::drawSheet(int edge, std::uint32_t colour)
{
    const int corner = edge + CORNER;
    drawBox(corner, edge, SIZE - 2 * corner, SIZE - 2 * edge, colour, false);
    drawBox(edge, corner, SIZE - 2 * edge, SIZE - 2 * corner, colour, false);
    drawCircle(corner, corner, 2 * CORNER, colour, false);
    drawCircle(SIZE - corner, corner, 2 * CORNER, colour, false);
}

void HUD::drawLogo()
{
    const AM::Image logo = mArchive->loadImage("tidewheel_logo.png", -1, false);
    const int width = logo->getWidth();
    const int left = SIZE / 2 - width / 2;
    const unsigned char* pixel = logo->getData();
    for (int y = BORDER; y < BORDER + logo->getHeight() && y < mHeight; ++y)
        for (int x = left; x < left + width; ++x, pixel += 4)
            if (x >= 0 && x < mWidth)
                mData[y * mWidth + x] =
                    0xFF000000u | static_cast<std::uint32_t>(pixel[2] << 16 | pixel[1] << 8 | pixel[0]);
}

void HUD::redraw()
{
    keepSelectionInside();
    drawBox(BORDER, LIST_TOP, INNER_WIDTH, LIST_HEIGHT, BACKGROUND, false);
    drawBox(BORDER, STATUS_TOP, INNER_WIDTH, STATUS_HEIGHT, BACKGROUND, false);
    drawBox(BORDER, STATUS_TOP, CLOCK_WIDTH, STATUS_HEIGHT, BLACK, false);
    recalculateVerticalScrolling();

    mStripe = false;
    int y = LIST_TOP;
    for (int i = 0; i < size(mEffectStatus.size()) && y <= mScroll + PAINTED_HEIGHT; ++i)
    {
        const Script::Effect& effect = *mScriptEngine->mEffects[static_cast<std::size_t>(i)];
        EffectStatus& status = mEffectStatus[static_cast<std::size_t>(i)];
        const bool selected = i == mCurrentEffect;
        y += drawEffect(effect, status, y, selected && mCurrentRow == 0);
        if (status.mExpanded) y += drawDetails(effect, y, selected);
    }

    drawBox(AXIS_LEFT - 1, LIST_TOP, 1, SIZE - BORDER - LIST_TOP, WHITE, false);
    drawClockLines();
    drawClock();
    mDirty = true;
}

// The rows of an expanded entry's triggers and splines. Returns their height.
int HUD::drawDetails(const Script::Effect& effect, int y, bool selected)
{
    const int top = y;
    const int triggers = size(effect.mTriggers.size());
    for (int k = 0; k < triggers; ++k)
    {
        const Script::Trigger& trigger = *effect.mTriggers[static_cast<std::size_t>(k)];
        y += drawTrigger(effect, trigger, effect.mStart, y, selected && mCurrentRow == k + 1);
        if (y > mScroll + PAINTED_HEIGHT) break;
    }
    for (int s = 0; s < size(effect.mSplines.size()); ++s)
    {
        const Script::Spline& spline = *effect.mSplines[static_cast<std::size_t>(s)];
        y += drawSpline(effect, spline, effect.mStart, y, selected && mCurrentRow == s + triggers + 1);
        if (y > mScroll + PAINTED_HEIGHT) break;
    }
    return y - top;
}

void HUD::recalculateVerticalScrolling()
{
    const Script::Effect* current = getCurrentEffect();
    if (!current)
    {
        mScroll = 0;
        return;
    }
    int y = 0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(mCurrentEffect); ++i)
    {
        const Script::Effect& effect = *mScriptEngine->mEffects[i];
        y += ROW_HEIGHT;
        if (mEffectStatus[i].mExpanded)
            y += ROW_HEIGHT * size(effect.mTriggers.size()) + SPLINE_HEIGHT * size(effect.mSplines.size());
    }

    int bottom = y + ROW_HEIGHT;
    if (mEffectStatus[static_cast<std::size_t>(mCurrentEffect)].mExpanded && mCurrentRow > 0)
    {
        const int triggers = size(current->mTriggers.size());
        bottom += ROW_HEIGHT * std::min(mCurrentRow, triggers) + SPLINE_HEIGHT * std::max(mCurrentRow - triggers, 0);
    }

    const int top = mCurrentRow == 0 ? bottom - ROW_HEIGHT : bottom;
    if (bottom - LIST_HEIGHT > mScroll)
        mScroll = bottom - LIST_HEIGHT;
    else if (top < mScroll)
        mScroll = top;
    mScroll = std::max(mScroll, 0);
}

HUD::Span HUD::getSpan(const Script::Effect& effect) const
{
    const float start = effect.mStart - mWindowStart;
    const float end = effect.mEnd - mWindowStart;
    if (!(start < mWindowLength && end > 0.0f)) return {false, 0.0f, 0.0f};
    return {true, std::max(start, 0.0f) * AXIS_WIDTH / mWindowLength,
            std::min(end, mWindowLength) * AXIS_WIDTH / mWindowLength};
}

int HUD::drawEffect(const Script::Effect& effect, EffectStatus& status, int y, bool selected)
{
    mStripe = !mStripe;
    const std::uint32_t shade = mStripe ? SHADE_B : SHADE_A;
    drawBox(BORDER, y, INNER_WIDTH, ROW_HEIGHT, selected ? (mEditMode ? EDITED_ROW : SELECTED_ROW) : shade, true);

    const bool known = mScriptEngine && mScriptEngine->mCallbacks.count(effect.mName) != 0;
    const bool running =
        mCursor >= effect.mStart - mWindowStart && mCursor < effect.mEnd - mWindowStart && known && effect.mEnabled;
    const std::uint32_t nameColour = !effect.mEnabled ? DISABLED_NAME : running ? RUNNING_NAME : ENABLED_NAME;
    drawText(effect.mName, 11, y - 1, nameColour, 97, true);
    if (!effect.mTriggers.empty() || !effect.mSplines.empty())
        drawText(status.mExpanded ? "-" : "+", 4, y, ENABLED_NAME, 10, true);

    const Span span = getSpan(effect);
    if (span.visible)
    {
        const bool edited = selected && mEditMode;
        const bool whole = edited && mCurrentPart == 1;
        std::uint32_t barColour = EFFECT_BAR;
        if (whole)
            barColour = PICKED;
        else if (!effect.mEnabled)
            barColour = EFFECT_BAR_DISABLED;
        else if (!known)
            barColour = EFFECT_BAR_UNKNOWN;
        else if (edited)
            barColour = EFFECT_BAR_EDITED;
        drawBox(span.left(), y + 1, span.width(), BAR_HEIGHT, barColour, true);
        if (running && !edited) drawBox(span.left(), y + 3, span.width(), 6, EFFECT_BAR_RUNNING, true);

        const int textWidth = span.width() - 4;
        if (textWidth >= 1 && (!effect.mEnabled || !known))
            drawText(effect.mEnabled ? "No Callback" : "Inactive", span.left() + 4, y - 1, EFFECT_BAR_END, textWidth,
                     true);

        const int right = AXIS_LEFT + truncate(span.x1);
        drawBox(right, y + 1, 1, BAR_HEIGHT, EFFECT_BAR_END, true);
        drawBox(span.left(), y + 1, 1, BAR_HEIGHT, EFFECT_BAR_END, true);
        if (edited && mCurrentPart == 0) drawBox(span.left(), y + 1, 1, BAR_HEIGHT, PICKED, true);
        if (edited && mCurrentPart == 2) drawBox(right, y + 1, 1, BAR_HEIGHT, PICKED, true);
    }

    if (selected) writeEffectStatus();
    return ROW_HEIGHT;
}

int HUD::drawTrigger(const Script::Effect& effect, const Script::Trigger& trigger, float effectStart, int y,
                     bool selected)
{
    const bool edited = selected && mEditMode;
    drawBox(BORDER, y, INNER_WIDTH, ROW_HEIGHT, mStripe ? SHADE_B : SHADE_A, true);
    if (edited)
        drawBox(BORDER, y, INNER_WIDTH, ROW_HEIGHT, EDITED_ROW, true);
    else
        drawBox(BORDER, y, NAME_WIDTH, ROW_HEIGHT, selected ? SELECTED_ROW : TRIGGER_BAR, true);

    const Span span = getSpan(effect);
    if (span.visible)
    {
        const std::uint32_t barColour = edited ? TRIGGER_BAR_EDITED : selected ? SELECTED_ROW : TRIGGER_BAR;
        drawBox(span.left(), y, span.width(), ROW_HEIGHT - 1, barColour, true);
    }
    drawText(trigger.mName, 20, y - 1, effect.mEnabled ? WHITE : DISABLED_NAME, 78, true);
    drawFirings(trigger, effectStart, y, selected);

    if (selected) writeTriggerStatus();
    return ROW_HEIGHT;
}

// One mark for each firing in the window. A trigger may repeat a million times: the times of its firings only rise, or
// only fall, so those in the window are one range of them, and of those that share a column the last one is seen.
void HUD::drawFirings(const Script::Trigger& trigger, float effectStart, int y, bool selected)
{
    if (isHidden(y, ROW_HEIGHT)) return;
    const float base = effectStart + trigger.mStart;
    if (!std::isfinite(base) || !std::isfinite(trigger.mDelay)) return;
    const auto time = [&](int firing) { return firingTime(trigger, base, mWindowStart, firing); };
    const auto column = [&](int firing) { return AXIS_LEFT + truncate(time(firing) * AXIS_WIDTH / mWindowLength); };
    const auto entered = [&](int firing) { return time(firing) > 0.0f; };
    const auto left = [&](int firing) { return !(time(firing) < mWindowLength); };

    const int count = std::max(trigger.mRepeat, 0);
    const bool rising = trigger.mDelay >= 0.0f;
    int first =
        rising ? firstIndex(0, count, entered) : firstIndex(0, count, [&](int firing) { return !left(firing); });
    const int end = rising ? firstIndex(first, count, left)
                           : firstIndex(first, count, [&](int firing) { return !entered(firing); });
    while (first < end)
    {
        const int x = column(first);
        const int next = first + 1 < end && column(first + 1) != x
                             ? first + 1
                             : firstIndex(first + 1, end, [&](int firing) { return column(firing) != x; });
        const int last = next - 1;
        std::uint32_t colour = last < trigger.mFired ? FIRING_DONE : WHITE;
        if (selected && mEditMode && mCurrentPart == last) colour = PICKED;
        drawBox(x, y + 1, 1, BAR_HEIGHT, colour, true);
        first = next;
    }
}

int HUD::drawSpline(const Script::Effect& effect, const Script::Spline& spline, float effectStart, int y, bool selected)
{
    const bool edited = selected && mEditMode;
    drawBox(BORDER, y, INNER_WIDTH, ROW_HEIGHT, mStripe ? SHADE_B : SHADE_A, true);
    if (edited)
        drawBox(BORDER, y, INNER_WIDTH, SPLINE_HEIGHT, EDITED_ROW, true);
    else
        drawBox(BORDER, y, NAME_WIDTH, SPLINE_HEIGHT, selected ? SELECTED_ROW : SPLINE_BAR, true);

    float divisor = spline.mValueScale * spline.mAbsMax;
    if (!(divisor >= 1.0f)) divisor = 1.0f;
    const Span span = getSpan(effect);
    if (span.visible)
    {
        const std::uint32_t barColour = edited ? SPLINE_BAR_EDITED : selected ? SELECTED_ROW : SPLINE_BAR;
        drawBox(span.left(), y, span.width(), SPLINE_HEIGHT - 1, barColour, true);
        for (int x = span.left(); x < AXIS_LEFT + truncate(span.x1); x += 5)
            drawPixel(x, y + SPLINE_MIDDLE, SPLINE_ZERO, true);
        if (!isHidden(y, SPLINE_HEIGHT, reachOf(spline, divisor))) drawCurve(spline, span, effectStart, y, divisor);
    }
    drawText(spline.mName, 20, y - 1, effect.mEnabled ? ENABLED_NAME : DISABLED_NAME, 78, true);
    drawText(spline.mType, 25, y + 11, SPLINE_TYPE_TEXT, 78, true);
    drawKeys(spline, effectStart, y, selected, divisor);

    if (selected) writeSplineStatus();
    return SPLINE_HEIGHT;
}

// The curve, a row for each column, and the rows in between where it is steep. `divisor` is the value that reaches the
// edge of the row; what goes beyond may run over other rows, and is cut at the edge of the list. A value that is no
// number leaves a gap.
void HUD::drawCurve(const Script::Spline& spline, const Span& span, float effectStart, int y, float divisor)
{
    const int top = mScroll + mClipTop;
    const int bottom = mScroll + mClipBottom;
    const int end = truncate(span.x1);
    bool connected = false;
    int lastRow = 0;
    for (int x = truncate(span.x0); x < end; ++x)
    {
        const float time = mWindowLength / AXIS_WIDTH * static_cast<float>(x) + mWindowStart - effectStart;
        const float height = spline.getSplineValue(time) * SPLINE_REACH / divisor;
        if (std::isnan(height))
        {
            connected = false;
            continue;
        }
        const int row = y + SPLINE_MIDDLE - truncate(height);
        drawPixel(AXIS_LEFT + x, row, SPLINE_CURVE, true);
        if (connected)
            for (int between = std::max(std::min(row, lastRow) + 1, top);
                 between < std::min(std::max(row, lastRow), bottom); ++between)
                drawPixel(AXIS_LEFT + x, between, SPLINE_CURVE, true);
        connected = true;
        lastRow = row;
    }
}

// A cross of five pixels at each key in the window.
void HUD::drawKeys(const Script::Spline& spline, float effectStart, int y, bool selected, float divisor)
{
    for (std::size_t k = 0; k < spline.mKeys.size(); ++k)
    {
        const Script::Spline::Key& key = *spline.mKeys[k];
        const float time = spline.mTimeScale * key.time + spline.mTimeOffset + effectStart - mWindowStart;
        if (!(time >= 0.0f && time < mWindowLength)) continue;
        const int x = AXIS_LEFT + truncate(time * AXIS_WIDTH / mWindowLength);
        const float value = key.value * spline.mValueScale + spline.mValueOffset;
        const int row = y + SPLINE_MIDDLE - truncate(value * SPLINE_REACH / divisor);
        const std::uint32_t colour = selected && mEditMode && mCurrentPart == size(k) ? PICKED : WHITE;
        drawPixel(x, row - 1, colour, true);
        drawPixel(x, row + 1, colour, true);
        drawPixel(x, row, colour, true);
        drawPixel(x + 1, row, colour, true);
        drawPixel(x - 1, row, colour, true);
    }
}

// The dotted lines at the clock and at the start of the show, over the whole list. Where the zoom has just left the
// clock beyond the axis, there is no line until the next time event brings the clock back.
void HUD::drawClockLines()
{
    const int clockColumn = AXIS_LEFT + truncate(mCursor * AXIS_WIDTH / mWindowLength);
    const bool clockVisible = clockColumn >= AXIS_LEFT && clockColumn < AXIS_RIGHT;
    const float start = mStartTime - mWindowStart;
    const bool startVisible = start >= 0.0f && start < mWindowLength;
    const int startColumn = AXIS_LEFT + truncate(start * AXIS_WIDTH / mWindowLength);
    for (int row = LIST_TOP; row < LIST_BOTTOM; ++row)
    {
        if (startVisible && row % 5 == 0) drawPixel(startColumn, row, START_LINE, false);
        if (clockVisible && row % 3 != 2) drawBox(clockColumn, row, 1, 1, CLOCK_LINE, false);
    }
}

void HUD::drawClock()
{
    drawText(formatText("time : %02d:%02d.%03d", clockMinutes(mTime), clockSeconds(mTime), clockMilliseconds(mTime)),
             15, LIST_BOTTOM, WHITE, 0, false);
    drawText(formatText("fps : %.2f", mFps), 19, LIST_BOTTOM + 10, WHITE, 0, false);
}

void HUD::clearStatus(std::uint32_t colour)
{
    drawBox(AXIS_LEFT, STATUS_TOP, AXIS_COLUMNS, STATUS_HEIGHT, colour, false);
}

// A text of the status box, which has three columns and two lines. It is cut at the end of the box.
void HUD::drawStatus(const std::string& text, int column, int line, std::uint32_t colour)
{
    const int x = AXIS_LEFT + 10 + 100 * column;
    drawText(text, x, LIST_BOTTOM + 10 * line, colour, AXIS_RIGHT - x, false);
}

void HUD::writeEffectStatus()
{
    const Script::Effect* effect = getCurrentEffect();
    if (!effect || mCurrentRow != 0) return;
    clearStatus(EFFECT_BAR);
    drawStatus(formatText("start: %.3f", effect->mStart), 0, 0);
    drawStatus(formatText("end: %.3f", effect->mEnd), 0, 1);
    drawStatus(formatText("triggers: %d", size(effect->mTriggers.size())), 1, 0);
    drawStatus(formatText("splines: %d", size(effect->mSplines.size())), 1, 1);
}

void HUD::writeTriggerStatus()
{
    const Script::Trigger* trigger = getCurrentTrigger();
    if (!trigger) return;
    clearStatus(TRIGGER_BAR);
    drawStatus(formatText("start: %.3f", trigger->mStart), 0, 0);
    if (trigger->mRepeat > 1)
    {
        if (mEditMode)
        {
            const float current = trigger->mStart + static_cast<float>(mCurrentPart) * trigger->mDelay;
            drawStatus(formatText("current: %.2f", current), 0, 1);
        }
        drawStatus(formatText("repeat: %d", trigger->mRepeat), 1, 0);
        drawStatus(formatText("delay: %.2f", trigger->mDelay), 1, 1);
    }
    drawStatus("value: " + trigger->mValue, 2, 0, TRIGGER_VALUE_TEXT);
}

void HUD::writeSplineStatus()
{
    const Script::Spline* spline = getCurrentSpline();
    if (!spline) return;
    clearStatus(SPLINE_BAR);
    drawStatus(formatText("keys: %d", size(spline->mKeys.size())), 0, 0);
    drawStatus(formatText("current: %.3f", spline->getSplineValue(mTime - getCurrentEffect()->mStart)), 0, 1);
    drawStatus(formatText("max: %.3f", spline->mValueScale * spline->mMax), 1, 0);
    drawStatus(formatText("min: %.3f", spline->mValueScale * spline->mMin), 1, 1);
    if (mEditMode && mCurrentPart >= 0 && mCurrentPart < size(spline->mKeys.size()))
    {
        const Script::Spline::Key& key = *spline->mKeys[static_cast<std::size_t>(mCurrentPart)];
        drawStatus(formatText("current key: %.2f", spline->getSplineValue(key.time)), 2, 0);
    }
}

} // namespace Tidewheel
