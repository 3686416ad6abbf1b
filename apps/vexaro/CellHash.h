// Point counts of occupied grid cells, keyed by packed cell indices: an open-addressing table
// sized by the number of occupied cells, never by the extent they span.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vx::app {

class CellHash {
public:
    /// Room for `keys` distinct cells at first; the table doubles whenever more than half of it
    /// is taken, so the hint bounds nothing.
    explicit CellHash(std::size_t keys = 0) { resize(keys); }

    /// Counts one more point in the cell; returns its count. `key` must not be ~0.
    uint32_t add(uint64_t key)
    {
        std::size_t at = slot(key);
        if (keys_[at] == kEmpty) {
            if (2 * (size_ + 1) > keys_.size()) {
                resize(size_ + 1);
                at = slot(key);
            }
            keys_[at] = key;
            ++size_;
        }
        return ++counts_[at];
    }

    /// Points counted in the cell, 0 when it is empty.
    uint32_t count(uint64_t key) const
    {
        const std::size_t at = slot(key);
        return keys_[at] == kEmpty ? 0 : counts_[at];
    }

    /// Occupied cells.
    std::size_t size() const { return size_; }

    /// Calls f(key, count) for every occupied cell.
    template <class F> void forEach(F&& f) const
    {
        for (std::size_t k = 0; k < keys_.size(); ++k)
            if (keys_[k] != kEmpty)
                f(keys_[k], counts_[k]);
    }

private:
    static constexpr uint64_t kEmpty = ~uint64_t(0);

    /// Rebuilds the table with room for `keys` cells at a load of at most one half.
    void resize(std::size_t keys)
    {
        std::size_t capacity = 16;
        while (capacity < 2 * keys)
            capacity *= 2;
        if (capacity <= keys_.size())
            return;
        std::vector<uint64_t> oldKeys(capacity, kEmpty);
        std::vector<uint32_t> oldCounts(capacity, 0);
        oldKeys.swap(keys_);
        oldCounts.swap(counts_);
        mask_ = capacity - 1;
        for (std::size_t k = 0; k < oldKeys.size(); ++k)
            if (oldKeys[k] != kEmpty) {
                const std::size_t at = slot(oldKeys[k]);
                keys_[at] = oldKeys[k];
                counts_[at] = oldCounts[k];
            }
    }

    std::size_t slot(uint64_t key) const
    {
        uint64_t h = key * 0x9E3779B97F4A7C15ull;
        std::size_t at = static_cast<std::size_t>(h ^ (h >> 29)) & mask_;
        while (keys_[at] != kEmpty && keys_[at] != key)
            at = (at + 1) & mask_;
        return at;
    }

    std::vector<uint64_t> keys_;
    std::vector<uint32_t> counts_;
    std::size_t mask_ = 0;
    std::size_t size_ = 0;
};

} // namespace vx::app
