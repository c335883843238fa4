// A flag against re-entry, up for the time of a step.
#pragma once

namespace TeskPlus {

class Raised
{
public:
    explicit Raised(bool& flag) : flag_(flag), former_(flag) { flag_ = true; }
    Raised(const Raised&) = delete;
    Raised& operator=(const Raised&) = delete;
    ~Raised() { flag_ = former_; }

private:
    bool& flag_;
    bool former_;
};

} // namespace TeskPlus
