#include "fe_light.h"

#include "tw_glinclude.h"

namespace Fennel
{

void Light::activate(int lightID, const MathBase::Matrix4x4Col& view) const
{
    const MathBase::Vector3f eye = view.transformPoint(mPosition);
    const float lightPos[4] = {eye.x, eye.y, eye.z, 1};

    // A distance of 0 goes to GL as the infinity that it is.
    GL_CHECKED(glLightf(lightID, GL_CONSTANT_ATTENUATION, 1));
    GL_CHECKED(glLightf(lightID, GL_LINEAR_ATTENUATION, 1 / mDistance));
    GL_CHECKED(glLightf(lightID, GL_QUADRATIC_ATTENUATION, 0));

    GL_CHECKED(glLightfv(lightID, GL_AMBIENT, mAmbient));
    GL_CHECKED(glLightfv(lightID, GL_SPECULAR, mColor));
    GL_CHECKED(glLightfv(lightID, GL_DIFFUSE, mColor));
    GL_CHECKED(glLightfv(lightID, GL_POSITION, lightPos));
}

} // namespace Fennel
