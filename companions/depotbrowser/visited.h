// The way back and forward through what was shown.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace depot {

// Keeps the places in the order of their visits. A visit forgets what lay ahead.
template <class Place>
class Visited {
public:
    // Another visit of the place that is shown changes nothing.
    void Visit(const Place& place) {
        if (!places_.empty() && places_[at_] == place) return;
        places_.resize(places_.empty() ? 0 : at_ + 1);
        if (places_.size() == kMostPlaces) places_.erase(places_.begin());
        places_.push_back(place);
        at_ = places_.size() - 1;
    }

    bool HasBack() const { return at_ > 0; }
    bool HasForward() const { return at_ + 1 < places_.size(); }

    // Moves and returns where that leads; nothing where there is no such way.
    std::optional<Place> Back() { return HasBack() ? std::optional(places_[--at_]) : std::nullopt; }
    std::optional<Place> Forward() {
        return HasForward() ? std::optional(places_[++at_]) : std::nullopt;
    }

    static constexpr std::size_t kMostPlaces = 100;

private:
    std::vector<Place> places_;
    std::size_t at_ = 0;
};

}  // namespace depot
