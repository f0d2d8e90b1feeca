#pragma once
// A range of indices: first, first + increment, ... up to and including last. Plain data; whoever
// takes a range checks it.

namespace Algorithms {

struct IndexRange {
    IndexRange() = default;
    IndexRange(unsigned firstIndex, unsigned lastIndex, unsigned step)
        : first(firstIndex), last(lastIndex), increment(step)
    {
    }

    bool operator==(const IndexRange& other) const
    {
        return first == other.first && last == other.last && increment == other.increment;
    }
    bool operator!=(const IndexRange& other) const { return !(*this == other); }

    unsigned first = 0;
    unsigned last = 0; // inclusive
    unsigned increment = 1;
};

} // namespace Algorithms
