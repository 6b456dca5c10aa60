// The editor of the timeline view: what keys and time events do.

#include "tw_hud.h"

#include "tw_hudtext.h"

#include "script_script.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <memory>
#include <vector>

namespace Tidewheel
{

namespace
{

// Key symbols as SDL numbers them.
enum Key
{
    KEY_BACKSPACE = 8,
    KEY_RETURN = 13,
    KEY_N = 110,
    KEY_O = 111,
    KEY_T = 116,
    KEY_V = 118,
    KEY_DELETE = 127,
    KEY_KEYPAD_MINUS = 269,
    KEY_KEYPAD_PLUS = 270,
    KEY_UP = 273,
    KEY_DOWN = 274,
    KEY_RIGHT = 275,
    KEY_LEFT = 276,
    KEY_INSERT = 277,
    KEY_F2 = 283,
    KEY_F3 = 284,
    KEY_F4 = 285
};

const char CARET = '|';
const float ZOOM_STEP = 5.0f; // seconds
const float NEW_EFFECT_LENGTH = 10.0f;
const float NEW_PART_DISTANCE = 5.0f; // pixels between a new repeat or key and the one before it

// Where a new trigger or spline goes: ahead of the selected one of `count`, and never behind the last.
int insertionIndex(int index, int count)
{
    return std::max(std::min(index, count - 1), 0);
}

// Puts something new into a list that owns what it holds, at `index`. Returns it.
template <class Item> Item& insertNew(std::vector<Item*>& list, int index)
{
    auto item = std::make_unique<Item>();
    list.insert(list.begin() + index, item.get());
    return *item.release();
}

template <class Item> void eraseAt(std::vector<Item*>& list, int index)
{
    const std::unique_ptr<Item> item(list[static_cast<std::size_t>(index)]);
    list.erase(list.begin() + index);
}

// The time of a key on the axis, in the entry's local seconds.
float axisTime(const Script::Spline& spline, const Script::Spline::Key& key)
{
    return key.time * spline.mTimeScale + spline.mTimeOffset;
}

} // namespace

Script::Effect* HUD::getCurrentEffect() const
{
    if (!mScriptEngine || mCurrentEffect < 0 || mCurrentEffect >= size(mScriptEngine->mEffects.size())) return nullptr;
    return mScriptEngine->mEffects[static_cast<std::size_t>(mCurrentEffect)];
}

Script::Trigger* HUD::getCurrentTrigger() const
{
    const Script::Effect* effect = getCurrentEffect();
    if (!effect || mCurrentRow < 1 || mCurrentRow > size(effect->mTriggers.size())) return nullptr;
    return effect->mTriggers[static_cast<std::size_t>(mCurrentRow - 1)];
}

Script::Spline* HUD::getCurrentSpline() const
{
    const Script::Effect* effect = getCurrentEffect();
    if (!effect) return nullptr;
    const int index = mCurrentRow - size(effect->mTriggers.size()) - 1;
    if (index < 0 || index >= size(effect->mSplines.size())) return nullptr;
    return effect->mSplines[static_cast<std::size_t>(index)];
}

// The timeline is open to others. Whatever they did to it since the last frame, the selection stands on something.
void HUD::keepSelectionInside()
{
    mEffectStatus.resize(mScriptEngine ? mScriptEngine->mEffects.size() : 0);
    mCurrentEffect = std::max(std::min(mCurrentEffect, size(mEffectStatus.size()) - 1), 0);
    const Script::Effect* effect = getCurrentEffect();
    const int rows = effect ? size(effect->mTriggers.size() + effect->mSplines.size()) : 0;
    mCurrentRow = std::max(std::min(mCurrentRow, rows), 0);
    if (!effect) mEditMode = false;
    mCurrentPart = std::max(std::min(mCurrentPart, getLastPart()), 0);
}

// The highest mCurrentPart of the selected row.
int HUD::getLastPart() const
{
    if (const Script::Trigger* trigger = getCurrentTrigger()) return std::max(trigger->mRepeat - 1, 0);
    if (const Script::Spline* spline = getCurrentSpline()) return std::max(size(spline->mKeys.size()) - 1, 0);
    return 2;
}

void HUD::processEvents(Events& events)
{
    if (events.count <= 0) return;
    keepSelectionInside();
    for (int i = 0; i < events.count; ++i)
    {
        const Event& event = events.events[i];
        if (event.type == EVENT_TIME)
            processTime(event);
        else if (event.type == EVENT_KEYDOWN && mTextField)
            processTextField(event);
        else if (event.type == EVENT_KEYDOWN)
            processKey(event);
    }
    redraw();
}

// The window follows the clock, which stands in its middle except near the start of the show.
void HUD::processTime(const Event& event)
{
    mCursor = mTime = event.time;
    mStartTime = event.start;
    mFps = event.fps;
    mWindowStart = std::max(event.time - 0.5f * mWindowLength, 0.0f);
    mCursor -= mWindowStart;
}

// What is typed is the key's symbol: lower case letters, digits and signs, without regard to Shift.
void HUD::processTextField(const Event& event)
{
    std::string& text = *mTextField;
    if (!text.empty()) text.pop_back();
    const int symbol = event.key & 0xFF;
    if (event.key == KEY_BACKSPACE)
    {
        if (!text.empty()) text.pop_back();
    }
    else if ((symbol >= 32 && symbol <= 90) || (symbol >= 97 && symbol <= 122))
        text += static_cast<char>(symbol);

    if (event.key == KEY_RETURN)
        mTextField = nullptr;
    else
        text += CARET;
}

void HUD::processKey(const Event& event)
{
    const bool anyEffect = getCurrentEffect() != nullptr;
    if (anyEffect && event.key == KEY_RETURN && !event.ctrl)
    {
        mEditMode = !mEditMode;
        mCurrentPart = 0;
    }
    if (!mEditMode && event.ctrl) processCommand(event);
    if (anyEffect && mEditMode) processEdit(event);
    if (!mEditMode) processMovement(event);
    processZoom(event);
}

// Commands of the browse mode, Ctrl being held.
void HUD::processCommand(const Event& event)
{
    if (event.key == KEY_F2 || event.key == KEY_INSERT) newEffect();
    Script::Effect* effect = getCurrentEffect();
    if (!effect) return;
    Script::Trigger* trigger = getCurrentTrigger();
    Script::Spline* spline = getCurrentSpline();

    switch (event.key)
    {
    case KEY_O:
        if (mCurrentRow == 0) effect->mEnabled = !effect->mEnabled;
        break;
    case KEY_UP:
        if (mCurrentRow == 0) swapEffects(mCurrentEffect - 1);
        break;
    case KEY_DOWN:
        if (mCurrentRow == 0) swapEffects(mCurrentEffect + 1);
        break;
    case KEY_F3:
        newTrigger(*effect);
        break;
    case KEY_F4:
        newSpline(*effect);
        break;
    case KEY_DELETE:
        deleteSelected();
        break;
    case KEY_T:
        if (spline) changeSplineType(*spline);
        break;
    case KEY_N:
        openTextField(trigger ? trigger->mName : spline ? spline->mName : effect->mName);
        break;
    case KEY_V:
        if (trigger) openTextField(trigger->mValue);
        break;
    }
}

// Swaps the selected entry with another, if there is such a one. Which places are expanded does not change.
void HUD::swapEffects(int other)
{
    std::vector<Script::Effect*>& effects = mScriptEngine->mEffects;
    if (other < 0 || other >= size(effects.size())) return;
    std::swap(effects[static_cast<std::size_t>(mCurrentEffect)], effects[static_cast<std::size_t>(other)]);
}

void HUD::newEffect()
{
    if (!mScriptEngine) return;
    Script::Effect& effect = insertNew(mScriptEngine->mEffects, mCurrentEffect);
    effect.mStart = mWindowStart + mCursor;
    effect.mEnd = effect.mStart + NEW_EFFECT_LENGTH;
    mEffectStatus.insert(mEffectStatus.begin() + mCurrentEffect, EffectStatus());
    mCurrentRow = 0;
}

void HUD::newTrigger(Script::Effect& effect)
{
    const int index = insertionIndex(mCurrentRow - 1, size(effect.mTriggers.size()));
    insertNew(effect.mTriggers, index).mStart = std::max(mWindowStart + mCursor - effect.mStart, 0.0f);
    mEffectStatus[static_cast<std::size_t>(mCurrentEffect)].mExpanded = true;
}

// A new spline is a hill over the whole entry.
void HUD::newSpline(Script::Effect& effect)
{
    const int row = mCurrentRow - size(effect.mTriggers.size()) - 1;
    Script::Spline& spline = insertNew(effect.mSplines, insertionIndex(row, size(effect.mSplines.size())));
    const float length = effect.mEnd - effect.mStart;
    insertNew(spline.mKeys, 0) = {0.0f, 0.0f, 0.0f};
    insertNew(spline.mKeys, 1) = {length / 2.0f, 1.0f, 0.0f};
    insertNew(spline.mKeys, 2) = {length, 0.0f, 0.0f};
    spline.recalculate();
    mEffectStatus[static_cast<std::size_t>(mCurrentEffect)].mExpanded = true;
}

// Deletes the selected entry or trigger. Of a spline the last key goes, and the whole of it only when three are left.
void HUD::deleteSelected()
{
    Script::Effect* effect = getCurrentEffect();
    const int triggers = size(effect->mTriggers.size());
    if (mCurrentRow == 0)
    {
        eraseAt(mScriptEngine->mEffects, mCurrentEffect);
        mEffectStatus.erase(mEffectStatus.begin() + mCurrentEffect);
        if (mCurrentEffect == size(mEffectStatus.size())) mCurrentEffect = std::max(mCurrentEffect - 1, 0);
        return;
    }

    if (getCurrentTrigger())
        eraseAt(effect->mTriggers, mCurrentRow - 1);
    else if (Script::Spline* spline = getCurrentSpline())
    {
        if (spline->mKeys.size() > 3)
        {
            eraseAt(spline->mKeys, size(spline->mKeys.size()) - 1);
            spline->recalculate();
            return;
        }
        eraseAt(effect->mSplines, mCurrentRow - triggers - 1);
    }
    if (mCurrentRow > size(effect->mTriggers.size() + effect->mSplines.size())) --mCurrentRow;
}

// To the next type of the circle; a spline of no type of these keeps its own.
void HUD::changeSplineType(Script::Spline& spline)
{
    static const char* const types[] = {"square", "linear", "bezier", "smooth", "square"};
    for (int i = 0; i < 4; ++i)
        if (spline.mType == types[i])
        {
            spline.mType = types[i + 1];
            break;
        }
    spline.recalculate();
}

void HUD::openTextField(std::string& text)
{
    text += CARET;
    mTextField = &text;
}

// The edit mode: without Ctrl, Left and Right pick a part of the row; with Ctrl they move it.
void HUD::processEdit(const Event& event)
{
    Script::Trigger* trigger = getCurrentTrigger();
    Script::Spline* spline = getCurrentSpline();
    if (!event.ctrl && event.key == KEY_RIGHT) mCurrentPart = std::min(mCurrentPart + 1, getLastPart());
    if (!event.ctrl && event.key == KEY_LEFT) mCurrentPart = std::max(mCurrentPart - 1, 0);

    if (trigger)
        editTrigger(*trigger, event);
    else if (spline)
        editSpline(*spline, event);
    else
        editEffect(*getCurrentEffect(), event);
}

void HUD::editEffect(Script::Effect& effect, const Event& event)
{
    const float step = getTimePerPixel();
    if (event.ctrl && event.key == KEY_RIGHT)
    {
        if (mCurrentPart < 2)
        {
            effect.mStart += step;
            if (effect.mStart > effect.mEnd) effect.mStart -= step;
        }
        if (mCurrentPart > 0) effect.mEnd += step;
    }
    if (event.ctrl && event.key == KEY_LEFT)
    {
        if (mCurrentPart < 2) effect.mStart = std::max(effect.mStart - step, 0.0f);
        if (mCurrentPart > 0)
        {
            effect.mEnd -= step;
            if (effect.mEnd < effect.mStart) effect.mEnd += step;
        }
    }
}

void HUD::editTrigger(Script::Trigger& trigger, const Event& event)
{
    const float step = getTimePerPixel();
    const float part = static_cast<float>(mCurrentPart);
    if (event.key == KEY_INSERT && trigger.mRepeat < INT_MAX)
    {
        // The first repeat stands at once where it can be seen.
        if (++trigger.mRepeat == 2) trigger.mDelay = NEW_PART_DISTANCE * step;
    }
    if (event.key == KEY_DELETE && trigger.mRepeat > 1)
    {
        --trigger.mRepeat;
        if (mCurrentPart > trigger.mRepeat - 1) --mCurrentPart;
    }

    if (event.ctrl && event.key == KEY_RIGHT)
    {
        if (mCurrentPart == 0)
            trigger.mStart += step;
        else
            trigger.mDelay += step / part; // the picked firing moves by one pixel
    }
    if (event.ctrl && event.key == KEY_LEFT)
    {
        if (mCurrentPart == 0)
            trigger.mStart = std::max(trigger.mStart - step, 0.0f);
        else
        {
            trigger.mDelay -= step / part;
            if (trigger.mDelay * part < step) trigger.mDelay = step / part;
        }
    }
}

void HUD::editSpline(Script::Spline& spline, const Event& event)
{
    if (spline.mKeys.empty()) return;
    Script::Spline::Key& key = *spline.mKeys[static_cast<std::size_t>(mCurrentPart)];
    if (event.key == KEY_INSERT) insertKey(spline);
    if (event.key == KEY_DELETE) deleteKey(spline);
    if (event.ctrl)
    {
        // One unit of the value that the effect gets.
        if (event.key == KEY_UP) key.value += 1.0f / spline.mValueScale;
        if (event.key == KEY_DOWN) key.value -= 1.0f / spline.mValueScale;
        if (event.key == KEY_RIGHT) moveKeyRight(spline);
        if (event.key == KEY_LEFT) moveKeyLeft(spline);
    }
    spline.recalculate();
}

// A new key behind the picked one, half way to the next and on the curve. It is picked then.
void HUD::insertKey(Script::Spline& spline)
{
    const Script::Spline::Key& key = *spline.mKeys[static_cast<std::size_t>(mCurrentPart)];
    Script::Spline::Key inserted;
    if (mCurrentPart == size(spline.mKeys.size()) - 1)
    {
        inserted.time = key.time + NEW_PART_DISTANCE * getTimePerPixel();
        inserted.value = key.value;
    }
    else
    {
        inserted.time = (key.time + spline.mKeys[static_cast<std::size_t>(mCurrentPart + 1)]->time) / 2.0f;
        inserted.value = spline.getSplineValue(inserted.time);
    }
    ++mCurrentPart;
    insertNew(spline.mKeys, mCurrentPart) = inserted;
}

void HUD::deleteKey(Script::Spline& spline)
{
    if (spline.mKeys.size() <= 2) return;
    eraseAt(spline.mKeys, mCurrentPart);
    mCurrentPart = std::max(mCurrentPart - 1, 0);
}

// Keys do not overtake each other: the one that would stays, and its neighbour is picked instead.
void HUD::moveKeyRight(Script::Spline& spline)
{
    Script::Spline::Key& key = *spline.mKeys[static_cast<std::size_t>(mCurrentPart)];
    const float step = getTimePerPixel() / spline.mTimeScale;
    key.time += step;
    if (mCurrentPart == size(spline.mKeys.size()) - 1) return;
    if (axisTime(spline, key) > axisTime(spline, *spline.mKeys[static_cast<std::size_t>(mCurrentPart + 1)]))
    {
        key.time -= step;
        ++mCurrentPart;
    }
}

void HUD::moveKeyLeft(Script::Spline& spline)
{
    Script::Spline::Key& key = *spline.mKeys[static_cast<std::size_t>(mCurrentPart)];
    const float step = getTimePerPixel() / spline.mTimeScale;
    key.time -= step;
    if (axisTime(spline, key) < 0.0f) key.time = (0.0f - spline.mTimeOffset) / spline.mTimeScale;
    if (mCurrentPart == 0) return;
    if (axisTime(spline, *spline.mKeys[static_cast<std::size_t>(mCurrentPart - 1)]) > axisTime(spline, key))
    {
        key.time += step;
        --mCurrentPart;
    }
}

// Movement through the list, with Ctrl too: so the selection goes with an entry that was swapped.
void HUD::processMovement(const Event& event)
{
    const Script::Effect* effect = getCurrentEffect();
    if (!effect) return;
    EffectStatus& status = mEffectStatus[static_cast<std::size_t>(mCurrentEffect)];
    const int rows = size(effect->mTriggers.size() + effect->mSplines.size());
    switch (event.key)
    {
    case KEY_UP:
        if (status.mExpanded && mCurrentRow > 0)
            --mCurrentRow;
        else if (mCurrentEffect > 0)
            selectLastRow(mCurrentEffect - 1);
        break;
    case KEY_DOWN:
        if (status.mExpanded && mCurrentRow < rows)
            ++mCurrentRow;
        else if (mCurrentEffect < size(mEffectStatus.size()) - 1)
        {
            ++mCurrentEffect;
            mCurrentRow = 0;
        }
        break;
    case KEY_RIGHT:
        status.mExpanded = true;
        break;
    case KEY_LEFT:
        mCurrentRow = 0;
        status.mExpanded = false;
        break;
    }
}

void HUD::selectLastRow(int index)
{
    mCurrentEffect = index;
    mCurrentRow = 0;
    const Script::Effect* effect = getCurrentEffect();
    if (mEffectStatus[static_cast<std::size_t>(index)].mExpanded)
        mCurrentRow = size(effect->mTriggers.size() + effect->mSplines.size());
}

void HUD::processZoom(const Event& event)
{
    if (event.key == KEY_KEYPAD_MINUS) mWindowLength += ZOOM_STEP;
    if (event.key == KEY_KEYPAD_PLUS && mWindowLength > ZOOM_STEP) mWindowLength -= ZOOM_STEP;
}

} // namespace Tidewheel
