#include "tw_effect.h"

namespace Tidewheel
{

Effect::~Effect() {}

void Effect::resetTriggers() {}

void Effect::executeTrigger(float, const std::string&, const std::string&) {}

void Effect::updateSpline(float, const std::string&, float) {}

void Effect::setup() {}

} // namespace Tidewheel
