#pragma once

#include <cstdint>

#include "tarnlib/sstring.h"

namespace TarnLibA500 {

/// A string that is written in place: room first, then the length that came out.
template <class unit, int flavour>
class StringBuilder : public SString_t<unit, flavour> {
    using Base = SString_t<unit, flavour>;

  public:
    /// A string with room for "units" code units.
    explicit StringBuilder(std::uint32_t units) : room_(units) {
        this->setSize(units);
        at_ = Base::concatAllocHelper(units);
    }
    /// Where the code units go; null for none.
    unit* units() noexcept { return at_; }
    std::uint32_t room() const noexcept { return room_; }
    /// The first "length" units are the text.
    void cut(std::uint32_t length) {
        if (length == 0) {
            this->empty();
        } else {
            Base::terminateBuffer(length);
        }
    }

  private:
    unit* at_;
    std::uint32_t room_;
};

}  // namespace TarnLibA500
