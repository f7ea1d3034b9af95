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
/// Keys sorted by vertices instead of a walk around each edge's end: the time stays k log k where thousands of edges meet at
/// one vertex. Most edges of a mesh have an end that no key has, and are turned away by one look at a byte.
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
    /// To be called when all are added: repeated ones become one. More may be added then, for another sort.
    void sort()
    {
        std::vector<std::uint64_t> vUnsorted(vKeys.size());
        vUnsorted.swap(vKeys);
        vStarts.assign(vIsEnd.size() + 1, 0);
        for (const std::uint64_t key : vUnsorted) {
            ++vStarts[sourceOf(key)];
        }
        std::size_t sum = 0;
        for (std::size_t& start : vStarts) {
            start = sum += start; // the end of the bucket, which is filled down to its start
        }
        for (const std::uint64_t key : vUnsorted) {
            vKeys[--vStarts[sourceOf(key)]] = key;
        }
        std::size_t num = 0;
        for (std::size_t i = 0; i < vIsEnd.size(); ++i) {
            const auto first = vKeys.begin() + static_cast<std::ptrdiff_t>(vStarts[i]);
            const auto end = vKeys.begin() + static_cast<std::ptrdiff_t>(vStarts[i + 1]);
            vStarts[i] = num;
            if (first == end) continue;
            std::sort(first, end);
            num = static_cast<std::size_t>(
                std::copy(first, std::unique(first, end), vKeys.begin() + static_cast<std::ptrdiff_t>(num)) -
                vKeys.begin());
        }
        vStarts.back() = num;
        vKeys.resize(num);
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
        const auto end = vKeys.begin() + static_cast<std::ptrdiff_t>(vStarts[sourceOf(key) + 1]);
        const auto it = std::lower_bound(vKeys.begin() + static_cast<std::ptrdiff_t>(vStarts[sourceOf(key)]), end, key);
        return it != end && *it == key ? static_cast<std::size_t>(it - vKeys.begin()) : none;
    }
    std::size_t findUndirected(std::int32_t a, std::int32_t b) const { return find(std::min(a, b), std::max(a, b)); }

private:
    static std::uint64_t keyOf(std::int32_t src, std::int32_t trg)
    {
        return std::uint64_t(static_cast<std::uint32_t>(src)) << 32 | static_cast<std::uint32_t>(trg);
    }

    static std::size_t sourceOf(std::uint64_t key) { return static_cast<std::size_t>(key >> 32); }

    std::vector<std::uint64_t> vKeys;
    std::vector<std::size_t> vStarts; ///< of each source's keys, and the end
    std::vector<std::uint8_t> vIsEnd;
};

} // namespace ORBI_LUMO25D

#endif
