// The README's example of an effect, included as it stands there.
#include "readme_effect.cpp"

int main()
{
    Tint tint;
    tint.updateSpline(0, "red", 0.5f);
    return tint.mRed == 0.5f ? 0 : 1;
}
