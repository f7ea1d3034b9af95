#ifndef LUMO25D_ENGINE_EDGEKEYS_H
#define LUMO25D_ENGINE_EDGEKEYS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace ORBI_LUMO25D
{

/// Directed edges, given by the numbers of their ends, that are looked for among the edges of many triangles.
///
/// Sorted keys instead of a walk around each edge's end: the time stays k log k where thousands of edges meet at one
/// vertex. Most edges of a mesh have an end that no key has, and are turned away by one look at a byte.
class EdgeKeys
{
public:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    explicit EdgeKeys(std::size_t numVertices) : vIsEnd(numVertices, 0) {}

    void add(std::int32_t src, std::int32_t trg)
    {
        vKeys.push_back(keyOf(src, trg));
        vIsEnd[static_cast<std::size_t>(src)] = 1;
        vIsEnd[static_cast<std::size_t>(trg)] = 1;
    }
    /// The same with the lower number first.
    void addUndirected(std::int32_t a, std::int32_t b) { add(std::min(a, b), std::max(a, b)); }
    /// To be called when all are added: repeated ones become one.
    void sort()
    {
        std::sort(vKeys.begin(), vKeys.end());
        vKeys.erase(std::unique(vKeys.begin(), vKeys.end()), vKeys.end());
    }

    /// 1 for an end of some key, else 0.
    int isEnd(std::int32_t vertex) const { return vIsEnd[static_cast<std::size_t>(vertex)]; }
    std::size_t size() const { return vKeys.size(); }
    std::int32_t src(std::size_t i) const { return static_cast<std::int32_t>(vKeys[i] >> 32); }
    std::int32_t trg(std::size_t i) const { return static_cast<std::int32_t>(vKeys[i] & 0xFFFFFFFFU); }
    /// The position of an edge in the sorted sequence, or none.
    std::size_t find(std::int32_t src, std::int32_t trg) const
    {
        if (vIsEnd[static_cast<std::size_t>(src)] == 0 || vIsEnd[static_cast<std::size_t>(trg)] == 0) return none;
        const std::uint64_t key = keyOf(src, trg);
        const auto it = std::lower_bound(vKeys.begin(), vKeys.end(), key);
        return it != vKeys.end() && *it == key ? static_cast<std::size_t>(it - vKeys.begin()) : none;
    }
    std::size_t findUndirected(std::int32_t a, std::int32_t b) const { return find(std::min(a, b), std::max(a, b)); }

private:
    static std::uint64_t keyOf(std::int32_t src, std::int32_t trg)
    {
        return std::uint64_t(static_cast<std::uint32_t>(src)) << 32 | static_cast<std::uint32_t>(trg);
    }

    std::vector<std::uint64_t> vKeys;
    std::vector<std::uint8_t> vIsEnd;
};

} // namespace ORBI_LUMO25D

#endif
