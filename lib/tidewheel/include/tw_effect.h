#pragma once

#include "script_callback.h"

namespace AM
{
class ArchiveManager;
}

namespace Tidewheel
{

class DeviceSDL;

// Anything the timeline can drive, with a way to load its data before the show starts.
class Effect : public Script::Callback
{
public:
    ~Effect() override;

    // The operations of the timeline; see Script::Callback. Here they do nothing.
    void resetTriggers() override;
    void executeTrigger(float time, const std::string& name, const std::string& value) override;
    void updateSpline(float time, const std::string& name, float value) override;

    // Loads what the effect needs from the archives. Called once, during the loading screen and inside the GL context.
    // Whatever it throws ends the program.
    virtual void setup(AM::ArchiveManager& archive) = 0;

    // Never called by the runtime. Effects override only the operation above; that this one is then hidden is meant.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Woverloaded-virtual"
    virtual void setup();
#pragma GCC diagnostic pop

    // What the runtime calls to have the effect set up on its device and archives, neither of which it owns.
    virtual void setupInternal(DeviceSDL* device, AM::ArchiveManager* archive) = 0;
};

} // namespace Tidewheel
