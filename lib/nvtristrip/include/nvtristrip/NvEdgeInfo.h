#pragma once

namespace NVIDIA
{

// One undirected edge and the faces at its two sides, by their places, -1 for none.
struct NvEdgeInfo
{
    // The face on the other side; -1 also for a face that is on no side.
    int OtherFace(int face) const { return face == m_face0 ? m_face1 : face == m_face1 ? m_face0 : -1; }

    int m_v0, m_v1;
    int m_face0, m_face1;
};

} // namespace NVIDIA
