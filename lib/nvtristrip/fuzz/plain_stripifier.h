#pragma once

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <vector>

// The stripifier step by step, without look-ups and shortcuts: everything is walked and scored anew. For comparison.
// Vertices are small numbers here.
class PlainStripifier
{
public:
    struct Edge;
    struct Face
    {
        int v[3];
        Edge* edges[3];
        int strip = -1, test = -1, trial = -1;

        bool has(int vertex) const { return std::count(v, v + 3, vertex) > 0; }
        bool isDegenerate() const { return v[0] == v[1] || v[1] == v[2] || v[0] == v[2]; }
    };
    struct Edge
    {
        int v0, v1;
        Face* faces[2];

        Face* other(const Face* face) const
        {
            return faces[0] == face ? faces[1] : faces[1] == face ? faces[0] : nullptr;
        }
    };
    struct Start
    {
        Face* face;
        Edge* edge;
        bool toV1;
    };
    typedef std::vector<Face*> Strip;

    std::vector<Strip> strips; // in their final order
    Strip looseFaces;
    int numWarnings = 0; // edges with a third triangle, as often as one came

    PlainStripifier(const std::vector<unsigned>& indices, unsigned cacheSize, unsigned minSize)
        : mCacheSize(cacheSize > 6 ? cacheSize - 6 : 1)
    {
        build(indices);
        std::vector<Strip> raw, pieces, big;
        findAll(raw);
        for (const Strip& strip : raw) split(strip, pieces);
        Strip pool;
        for (const Strip& piece : pieces)
        {
            if (piece.size() >= minSize)
                big.push_back(piece);
            else
                pool.insert(pool.end(), piece.begin(), piece.end());
        }
        while (!pool.empty())
        {
            auto best = pool.begin();
            for (auto i = pool.begin(); i != pool.end(); ++i)
            {
                if (hits({*i}) > hits({*best})) best = i;
            }
            send({*best});
            looseFaces.push_back(*best);
            pool.erase(best);
        }
        mCache.clear();
        order(big);
    }

    // The real faces of all strips, then the loose ones.
    std::vector<int> list() const
    {
        std::vector<int> result;
        for (const Strip& strip : strips)
        {
            for (const Face* face : strip)
            {
                if (!face->isDegenerate()) result.insert(result.end(), face->v, face->v + 3);
            }
        }
        const std::vector<int> loose = looseList();
        result.insert(result.end(), loose.begin(), loose.end());
        return result;
    }

    std::vector<int> looseList() const
    {
        std::vector<int> result;
        for (const Face* face : looseFaces) result.insert(result.end(), face->v, face->v + 3);
        return result;
    }

    enum Join
    {
        STITCHED,
        SEPARATE,
        RESTARTED
    };

    // The strips as lists of vertices: one list, or with SEPARATE one for each.
    std::vector<std::vector<int>> written(Join join, int restartValue) const
    {
        std::vector<std::vector<int>> result;
        for (const Strip& strip : strips)
        {
            if (result.empty() || join == SEPARATE) result.emplace_back();
            std::vector<int>& out = result.back();

            std::vector<int> v = orderedFirst(strip);
            if (strip.size() > 2 && strip[1]->isDegenerate())
            {
                v = orderedFirst({strip[0], strip[1]});
                if (v[1] == strip[1]->v[1]) std::swap(v[1], v[2]);
            }
            const bool joined = join == STITCHED && &strip != &strips[0];
            if (joined) out.push_back(v[0]);
            if ((joined && out.size() % 2 != 0) == isClockwise(*strip[0], v)) out.push_back(v[0]);
            out.insert(out.end(), v.begin(), v.end());
            for (std::size_t i = 1; i < strip.size(); ++i)
            {
                const int* corners = strip[i]->v;
                int added = -1;
                for (int corner = 2; corner >= 0; --corner)
                {
                    if (std::count(v.begin(), v.end(), corners[corner]) == 0) added = corners[corner];
                }
                if (added < 0)
                    v.assign(corners, corners + 3);
                else
                    v = {v[1], v[2], added};
                out.push_back(v[2]);
            }
            if (join == RESTARTED) out.push_back(restartValue);
            if (join == STITCHED && &strip != &strips.back()) out.push_back(v[2]);
        }
        return result;
    }

private:
    Face* make(int a, int b, int c)
    {
        mFaces.emplace_back(new Face{{a, b, c}, {}});
        return mFaces.back().get();
    }

    void build(const std::vector<unsigned>& indices)
    {
        for (std::size_t i = 0; i + 2 < indices.size(); i += 3)
        {
            Face* face = make(int(indices[i]), int(indices[i + 1]), int(indices[i + 2]));
            if (face->isDegenerate()) continue;
            bool fresh = false;
            std::vector<Edge*> joined;
            for (int side = 0; side < 3; ++side)
            {
                const int v0 = face->v[side], v1 = face->v[(side + 1) % 3];
                Edge* edge = nullptr;
                for (Edge* known : mLists[v0])
                {
                    if (!edge && (known->v0 == v1 || known->v1 == v1)) edge = known;
                }
                if (!edge)
                {
                    fresh = true;
                    mEdges.emplace_back(new Edge{v0, v1, {face, nullptr}});
                    edge = mEdges.back().get();
                    for (const int v : {v0, v1}) mLists[v].insert(mLists[v].begin(), edge);
                }
                else if (!edge->faces[1])
                {
                    edge->faces[1] = face;
                    joined.push_back(edge);
                }
                else
                    ++numWarnings;
                face->edges[side] = edge;
            }
            const bool known = std::any_of(mReal.begin(), mReal.end(),
                                           [face](const Face* f) { return std::equal(f->v, f->v + 3, face->v); });
            if (known && !fresh)
            {
                for (Edge* edge : joined) edge->faces[1] = nullptr;
            }
            else
                mReal.push_back(face);
        }
    }

    static int neighbors(const Face* face)
    {
        int number = 0;
        for (const Edge* edge : face->edges) number += edge && edge->other(face);
        return number;
    }

    Face* reset()
    {
        int place = -1;
        if (mFirst)
        {
            int most = 0;
            for (std::size_t i = 0; i < mReal.size(); ++i)
            {
                if (3 - neighbors(mReal[i]) <= most) continue;
                most = 3 - neighbors(mReal[i]);
                place = int(i);
            }
        }
        mFirst = false;
        if (place < 0) place = int(float(mReal.size() - 1) * mJump);
        std::size_t at = std::size_t(place);
        while (mReal[at]->strip >= 0)
        {
            at = (at + 1) % mReal.size();
            if (at == std::size_t(place)) return nullptr;
        }
        mJump += 0.1f;
        if (mJump > 1.0f) mJump = 0.05f;
        return mReal[at];
    }

    bool marked(const Face* face) const { return face->strip >= 0 || face->trial == mTrial; }

    static Face* across(const Face* face, int a, int b)
    {
        for (const Edge* edge : face->edges)
        {
            if ((edge->v0 == a && edge->v1 == b) || (edge->v0 == b && edge->v1 == a)) return edge->other(face);
        }
        return nullptr;
    }

    void add(Strip& list, Face* face)
    {
        face->trial = mTrial;
        face->test = mStripId;
        list.push_back(face);
    }

    void grow(Strip& list, const Face* from, int e0, int e1, std::set<int>* seen)
    {
        Face* next = across(from, e0, e1);
        while (next && !marked(next))
        {
            int t0 = e1, t1 = -1;
            for (const int v : next->v) t1 = v != e0 && v != e1 ? v : t1;
            if (seen && !seen->insert(t1).second) break;
            const Face* beyond = across(next, t0, t1);
            const Face* aside = across(next, e0, t1);
            if ((!beyond || marked(beyond)) && aside && !marked(aside))
            {
                add(list, make(e0, e1, e0));
                t0 = e0;
            }
            add(list, next);
            e0 = t0;
            e1 = t1;
            next = across(next, e0, e1);
        }
    }

    Strip growBoth(const Start& start)
    {
        const int p0 = start.toV1 ? start.edge->v0 : start.edge->v1, p1 = start.toV1 ? start.edge->v1 : start.edge->v0;
        int p2 = -1;
        for (const int v : start.face->v) p2 = v != p0 && v != p1 ? v : p2;
        Strip forward, backward;
        add(forward, start.face);
        grow(forward, start.face, p1, p2, nullptr);
        std::set<int> seen;
        for (const Face* face : forward) seen.insert(face->v, face->v + 3);
        grow(backward, start.face, p1, p0, &seen);
        std::reverse(backward.begin(), backward.end());
        backward.insert(backward.end(), forward.begin(), forward.end());
        return backward;
    }

    bool traverse(Start& start)
    {
        const int v = start.toV1 ? start.edge->v1 : start.edge->v0;
        const auto inStrip = [this](const Face* face) { return face && face->test == mStripId; };
        for (Edge* edge : mLists[v])
        {
            for (int side = 0; side < 2; ++side)
            {
                Face* face = edge->faces[1 - side];
                if (!edge->faces[1] || inStrip(edge->faces[side]) || marked(face)) continue;
                bool shares = false;
                for (const Edge* e : face->edges) shares = shares || inStrip(e->faces[0]) || inStrip(e->faces[1]);
                start = {face, edge, (shares ? edge->v0 : edge->v1) == v};
                return true;
            }
        }
        return false;
    }

    void findAll(std::vector<Strip>& strips_)
    {
        while (!mReal.empty())
        {
            Strip resets;
            for (int i = 0; i < 10; ++i)
            {
                Face* face = reset();
                if (face && std::count(resets.begin(), resets.end(), face) == 0) resets.push_back(face);
            }
            if (resets.empty()) return;
            std::vector<Strip> best;
            float bestSize = -1;
            for (Face* face : resets)
            {
                for (int i = 0; i < 6; ++i, ++mTrial)
                {
                    Start start = {face, face->edges[i / 2], i % 2 == 0};
                    std::vector<Strip> trial;
                    int numReal = 0;
                    do
                    {
                        ++mStripId;
                        trial.push_back(growBoth(start));
                        for (const Face* f : trial.back()) numReal += !f->isDegenerate();
                    } while (traverse(start));
                    const float size = float(numReal) / float(trial.size());
                    if (size > bestSize) best = trial;
                    bestSize = std::max(size, bestSize);
                }
            }
            for (const Strip& strip : best)
            {
                for (Face* face : strip) face->strip = 0;
            }
            strips_.insert(strips_.end(), best.begin(), best.end());
        }
    }

    void split(const Strip& strip, std::vector<Strip>& pieces) const
    {
        std::size_t numReal = 0;
        for (const Face* face : strip) numReal += !face->isDegenerate();
        if (numReal <= mCacheSize) return pieces.push_back(strip);

        std::vector<std::size_t> lengths(numReal / mCacheSize, mCacheSize);
        const std::size_t leftover = numReal % mCacheSize;
        if (leftover >= 4)
            lengths.push_back(leftover);
        else
            lengths.back() += leftover;
        std::size_t i = 0;
        for (std::size_t length : lengths)
        {
            while (strip[i]->isDegenerate()) ++i;
            pieces.emplace_back();
            for (; length > 0; ++i)
            {
                pieces.back().push_back(strip[i]);
                length -= !strip[i]->isDegenerate();
            }
        }
    }

    float hits(const Strip& strip) const
    {
        int number = 0;
        for (const Face* face : strip)
        {
            for (const int v : face->v) number += std::count(mCache.begin(), mCache.end(), v) > 0;
        }
        return float(number) / float(strip.size());
    }

    void send(const Strip& strip)
    {
        for (const Face* face : strip)
        {
            for (const int v : face->v)
            {
                if (std::count(mCache.begin(), mCache.end(), v) > 0) continue;
                mCache.insert(mCache.begin(), v);
                if (mCache.size() > mCacheSize) mCache.pop_back();
            }
        }
    }

    static std::vector<int> orderedFirst(const Strip& strip)
    {
        std::vector<int> v(strip[0]->v, strip[0]->v + 3);
        if (strip.size() > 1)
        {
            const auto lone = std::find_if(v.begin(), v.end(), [&](int vertex) { return !strip[1]->has(vertex); });
            if (lone != v.end()) std::iter_swap(v.begin(), lone);
        }
        if (strip.size() > 2 && strip[2]->has(v[1]) && !strip[2]->has(v[0]) && !strip[2]->has(v[2]))
            std::swap(v[1], v[2]);
        return v;
    }

    static bool isClockwise(const Face& face, const std::vector<int>& v)
    {
        return face.v[(std::find(face.v, face.v + 3, v[0]) - face.v + 1) % 3] == v[1];
    }

    static bool isCW(const Strip& strip) { return isClockwise(*strip[0], orderedFirst(strip)); }

    void order(std::vector<Strip>& waiting)
    {
        float least = 10000;
        auto next = waiting.begin();
        for (auto i = waiting.begin(); i != waiting.end(); ++i)
        {
            int number = 0;
            for (const Face* face : *i) number += neighbors(face);
            const float cost = float(number) / float(i->size());
            if (cost < least) next = i;
            least = std::min(cost, least);
        }
        bool wantsCW = true;
        while (!waiting.empty())
        {
            send(*next);
            wantsCW = wantsCW == (next->size() % 2 == 0);
            strips.push_back(*next);
            waiting.erase(next);
            float best = -1;
            for (auto i = waiting.begin(); i != waiting.end(); ++i)
            {
                const float score = hits(*i);
                if (score > best || (score == best && isCW(*i) == wantsCW)) next = i;
                best = std::max(score, best);
            }
        }
    }

    std::size_t mCacheSize;
    std::vector<std::unique_ptr<Face>> mFaces;
    std::vector<std::unique_ptr<Edge>> mEdges;
    Strip mReal;
    std::map<int, std::vector<Edge*>> mLists;
    std::vector<int> mCache;
    int mTrial = 0, mStripId = 0;
    bool mFirst = true;
    float mJump = 0;
};
