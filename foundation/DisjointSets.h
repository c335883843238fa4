// Elements that are united to sets while it is found out what belongs together.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace Tesk {

/// Elements count from 0; the smallest of a set is its root (union-find with path halving; Tarjan 1975).
class DisjointSets
{
public:
    void Clear() { parents_.clear(); }
    int Count() const { return static_cast<int>(parents_.size()); }
    /// A new element, in a set of its own.
    int Add()
    {
        parents_.push_back(Count());
        return parents_.back();
    }
    int Root(int element)
    {
        while (Parent(element) != element)
            element = Parent(element) = Parent(Parent(element));
        return element;
    }
    /// Makes one set of those of two elements; its root.
    int Unite(int a, int b)
    {
        a = Root(a);
        b = Root(b);
        return Parent(std::max(a, b)) = std::min(a, b);
    }

private:
    int& Parent(int element) { return parents_[static_cast<std::size_t>(element)]; }

    std::vector<int> parents_;
};

} // namespace Tesk
