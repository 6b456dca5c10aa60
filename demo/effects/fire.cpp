#include "fire.h"

#include "effect_helpers.h"

namespace
{

const int PARTICLES = 2000;

} // namespace

void Fire::setup(AM::ArchiveManager&)
{
    mParticles.clear();
    for (int i = 0; i < PARTICLES; ++i)
    {
        Particle particle = {};
        particle.angle = 6.28f * randomUnit();
        particle.distance = 2 * randomUnit();
        // Two numbers are drawn and not used: the sequence of all later ones counts on them.
        randomUnit();
        randomUnit();
        particle.rotationX = 360 * randomUnit();
        particle.rotationY = 360 * randomUnit();
        particle.rotationZ = 360 * randomUnit();
        particle.speed = 0.014f * randomUnit() + 0.001f;
        particle.size = 0.09f * randomUnit() + 0.09f;
        mParticles.push_back(particle);
    }
}

void Fire::updateSpline(float, const std::string& name, float value)
{
    if (name == "intensity")
        mIntensity = value / 100;
    else if (name == "size")
        mSize = value / 10;
}

void Fire::update(float, float delta, float)
{
    glDisable(GL_LIGHTING);
    glDisable(GL_CULL_FACE);
    glDisable(GL_DEPTH_TEST);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    // The particles' places go onto the projection matrix.
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);

    move(delta);
    draw();

    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glDisable(GL_BLEND);
}

void Fire::move(float delta)
{
    for (Particle& particle : mParticles)
    {
        particle.distance += particle.speed * (delta * 100);
        if (particle.distance > 2)
            particle.distance -= 2;
        else if (particle.distance < 0)
            particle.distance += 2;
        const float turn = delta * 10550 * particle.speed;
        particle.rotationX += turn;
        particle.rotationY += turn;
        particle.rotationZ += turn;
    }
}

void Fire::draw() const
{
    for (const Particle& particle : mParticles)
    {
        const float distance = particle.distance / 1.42f * mSize;
        const float half = particle.size / 1.4f;
        glLoadIdentity();
        glTranslatef(std::sin(particle.angle) * distance, std::cos(particle.angle) * distance, 0);
        glRotatef(particle.rotationX, 1, 0, 0);
        glRotatef(particle.rotationY, 0, 1, 0);
        glRotatef(particle.rotationZ, 0, 0, 1);
        glBegin(GL_QUADS);
        glColor4f(particle.red, particle.green, particle.blue, 2 * (1 - particle.distance) * mIntensity);
        glVertex3f(half, -half, 0);
        glVertex3f(half, half, 0);
        glVertex3f(-half, half, 0);
        glVertex3f(-half, -half, 0);
        glEnd();
        GL_REPORT_ERROR(__FILE__, __LINE__, "glEnd()");
    }
}
