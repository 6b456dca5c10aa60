#include "maril64k.h"

#include <algorithm>
#include <cmath>

namespace maril64k
{

GLuint cellshadeTexture = 0;

void Point3D::set(float px, float py, float pz)
{
    x = px;
    y = py;
    z = pz;
}

void Point3D::normalize()
{
    const float length = std::sqrt(x * x + y * y + z * z);
    x /= length;
    y /= length;
    z /= length;
}

Point3D Point3D::operator*=(float factor)
{
    x *= factor;
    y *= factor;
    z *= factor;
    return *this;
}

Point3D Point3D::operator+=(const Point3D& other)
{
    x += other.x;
    y += other.y;
    z += other.z;
    return *this;
}

void Matrix::reset()
{
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 4; ++column) m[row][column] = row == column ? 1.0f : 0.0f;
}

void Matrix::rotateX(float angle)
{
    const float c = cosf(angle);
    const float s = sinf(angle);
    for (int i = 0; i < 4; ++i)
    {
        const float r1 = m[1][i];
        const float r2 = m[2][i];
        m[1][i] = c * r1 + s * r2;
        m[2][i] = c * r2 - s * r1;
    }
}

void Matrix::rotateY(float angle)
{
    const float c = cosf(angle);
    const float s = sinf(angle);
    for (int i = 0; i < 4; ++i)
    {
        const float r0 = m[0][i];
        const float r2 = m[2][i];
        m[0][i] = c * r0 + s * r2;
        m[2][i] = c * r2 - s * r0;
    }
}

void Matrix::rotateZ(float angle)
{
    const float c = cosf(angle);
    const float s = sinf(angle);
    for (int i = 0; i < 4; ++i)
    {
        const float r0 = m[0][i];
        const float r1 = m[1][i];
        m[0][i] = c * r0 - s * r1;
        m[1][i] = c * r1 + s * r0;
    }
}

void Matrix::translate(float x, float y, float z)
{
    m[0][3] += x;
    m[1][3] += y;
    m[2][3] += z;
}

void Matrix::scale(float x, float y, float z)
{
    for (int i = 0; i < 4; ++i)
    {
        m[0][i] *= x;
        m[1][i] *= y;
        m[2][i] *= z;
    }
}

void Matrix::transform(const Point3D* source, Point3D* target, int start, int count) const
{
    for (int i = start; i < start + count; ++i)
    {
        const Point3D p = source[i];
        target[i].set(m[0][0] * p.x + m[0][1] * p.y + m[0][2] * p.z + m[0][3],
                      m[1][0] * p.x + m[1][1] * p.y + m[1][2] * p.z + m[1][3],
                      m[2][0] * p.x + m[2][1] * p.y + m[2][2] * p.z + m[2][3]);
    }
}

void Matrix::transform(Point3D& p) const
{
    p.set(m[0][0] * p.x + m[0][1] * p.y + m[0][2] * p.z, m[1][0] * p.x + m[1][1] * p.y + m[1][2] * p.z,
          m[2][0] * p.x + m[2][1] * p.y + m[2][2] * p.z);
}

Point3D rPolygon::getNormal(const Polyhedron* polyhedron) const
{
    const Point3D& a = polyhedron->mVertices[mIndices[0]];
    const Point3D u = a - polyhedron->mVertices[mIndices[1]];
    const Point3D v = a - polyhedron->mVertices[mIndices[2]];
    Point3D normal(u.y * v.z - u.z * v.y, u.z * v.x - u.x * v.z, u.x * v.y - u.y * v.x);
    normal.normalize();
    return normal;
}

void Polyhedron::calcNormals()
{
    mPolygonNormals.clear();
    for (const rPolygon& polygon : mPolygons) mPolygonNormals.push_back(polygon.getNormal(this));

    mVertexNormals.assign(mVertices.size(), Point3D());
    mShade.assign(mVertices.size(), 0.0f);
    std::vector<int> polygons(mVertices.size(), 0); // how many hold the vertex
    for (std::size_t i = 0; i < mPolygons.size(); ++i)
    {
        const std::vector<unsigned int>& indices = mPolygons[i].mIndices;
        for (std::size_t k = 0; k < indices.size(); ++k)
        {
            // A list may name a vertex twice; the polygon counts once.
            if (std::find(indices.begin(), indices.begin() + static_cast<std::ptrdiff_t>(k), indices[k]) !=
                indices.begin() + static_cast<std::ptrdiff_t>(k))
                continue;
            mVertexNormals[indices[k]] += mPolygonNormals[i];
            ++polygons[indices[k]];
        }
    }
    for (std::size_t i = 0; i < mVertices.size(); ++i)
    {
        if (polygons[i] == 0) continue;
        Point3D& normal = mVertexNormals[i];
        normal.set(normal.x / static_cast<float>(polygons[i]), normal.y / static_cast<float>(polygons[i]),
                   normal.z / static_cast<float>(polygons[i]));
    }
}

void Polyhedron::drawCell()
{
    float m[16];
    glGetFloatv(GL_MODELVIEW_MATRIX, m);
    for (std::size_t i = 0; i < mVertexNormals.size(); ++i)
    {
        // The third row of the matrix gives the normal's depth in view space.
        const Point3D& n = mVertexNormals[i];
        mShade[i] = std::max(0.0f, n.x * m[2] + n.y * m[6] + n.z * m[10]);
    }

    glDisable(GL_TEXTURE_2D);
    glDisable(GL_LIGHTING);
    glDisable(GL_BLEND);
    glEnable(GL_COLOR_MATERIAL);
    glEnable(GL_CULL_FACE);
    glEnable(GL_TEXTURE_1D);
    glBindTexture(GL_TEXTURE_1D, cellshadeTexture);

    glEnableClientState(GL_VERTEX_ARRAY);
    glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    glVertexPointer(3, GL_FLOAT, 0, mVertices.data());
    glTexCoordPointer(1, GL_FLOAT, 0, mShade.data());
    for (const rPolygon& polygon : mPolygons)
        glDrawElements(GL_TRIANGLE_STRIP, static_cast<GLsizei>(polygon.mIndices.size()), GL_UNSIGNED_INT,
                       polygon.mIndices.data());

    glDisable(GL_TEXTURE_1D);
    glEnable(GL_TEXTURE_2D);
    glEnable(GL_LIGHTING);
    glDisableClientState(GL_VERTEX_ARRAY);
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
}

void Polyhedron::draw() const
{
    for (const rPolygon& polygon : mPolygons)
    {
        glBegin(GL_TRIANGLE_STRIP);
        for (unsigned int index : polygon.mIndices)
        {
            glNormal3f(mVertexNormals[index].x, mVertexNormals[index].y, mVertexNormals[index].z);
            glVertex3f(mVertices[index].x, mVertices[index].y, mVertices[index].z);
        }
        glEnd();
    }
}

void Polyhedron::drawTex() const
{
    for (const rPolygon& polygon : mPolygons)
    {
        glBegin(GL_TRIANGLE_STRIP);
        for (unsigned int index : polygon.mIndices)
        {
            glTexCoord2f(mTexCoords[index].x, mTexCoords[index].y);
            glNormal3f(mVertexNormals[index].x, mVertexNormals[index].y, mVertexNormals[index].z);
            glVertex3f(mVertices[index].x, mVertices[index].y, mVertices[index].z);
        }
        glEnd();
    }
}

void Polyhedron::setOrientation(const Point3D& direction, const Point3D& up)
{
    if (!(mDirection == direction)) mDirection = direction;
    if (!(mUp == up)) mUp = up;
}

} // namespace maril64k
