#include "orvane_host/present/detail/BatchOrder.h"

#include "orvane_host/geometry/ViewVolume.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>
#include <tuple>

namespace OV::Host::Detail
{

namespace
{

using Place = std::vector<BatchPlace>::iterator;

/// Lets bits stand three places apart.
std::uint64_t Spread(std::uint64_t bits)
{
    bits = (bits | bits << 32) & 0x1F00000000FFFFull;
    bits = (bits | bits << 16) & 0x1F0000FF0000FFull;
    bits = (bits | bits << 8) & 0x100F00F00F00F00Full;
    bits = (bits | bits << 4) & 0x10C30C30C30C30C3ull;
    return (bits | bits << 2) & 0x1249249249249249ull;
}

/// Where a place lies along a curve that fills a box: what is near on the curve is near in space.
std::uint64_t PlaceOnCurve(const Vector& place, const WorldBox& all)
{
    const auto cell = [](float at, float from, float to) {
        const float share = (at - from) / (to - from);
        return static_cast<std::uint64_t>(share > 0.0f ? std::min(share, 1.0f) * 1048575.0f : 0.0f);
    };
    return Spread(cell(place.x, all.low.x, all.high.x)) | Spread(cell(place.y, all.low.y, all.high.y)) << 1
        | Spread(cell(place.z, all.low.z, all.high.z)) << 2;
}

WorldBox BoxOf(Place first, Place last)
{
    WorldBox box = WorldBox::Empty();
    std::for_each(first, last, [&](const BatchPlace& place) { box.Widen(place.middle); });
    return box;
}

std::size_t CountVertices(Place first, Place last)
{
    return std::accumulate(first, last, std::size_t{0},
                           [](std::size_t sum, const BatchPlace& place) { return sum + place.vertices; });
}

void SortAlongCurve(Place first, Place last)
{
    const WorldBox all = BoxOf(first, last);
    std::vector<std::tuple<std::uint64_t, std::uint32_t, std::uint32_t, BatchPlace*>> order;
    order.reserve(static_cast<std::size_t>(last - first));
    for (Place place = first; place != last; ++place)
    {
        order.emplace_back(PlaceOnCurve(place->middle, all), place->order, place->index, &*place);
    }
    std::sort(order.begin(), order.end());
    std::vector<BatchPlace> sorted;
    sorted.reserve(order.size());
    std::transform(order.begin(), order.end(), std::back_inserter(sorted),
                   [](const auto& entry) { return *std::get<3>(entry); });
    std::copy(sorted.begin(), sorted.end(), first);
}

/// Lets those with the least coordinates stand first.
/// @return where those end that have a number of vertices, or as many as are nearest below: one at least, not all.
Place Divide(Place first, Place last, float Vector::* axis, std::size_t vertices)
{
    const auto isBefore = [axis](const BatchPlace& a, const BatchPlace& b) {
        return std::make_tuple(a.middle.*axis, a.order, a.index) < std::make_tuple(b.middle.*axis, b.order, b.index);
    };
    Place low = first;
    Place high = last;
    while (high - low > 1)
    {
        const Place middle = low + (high - low) / 2;
        std::nth_element(low, middle, high, isBefore);
        const std::size_t here = CountVertices(low, middle);
        if (here <= vertices)
        {
            vertices -= here;
            low = middle;
        }
        else
        {
            high = middle;
        }
    }
    return std::max(low, first + 1);
}

struct Parts
{
    Place begin;
    std::size_t most;
    std::size_t room; ///< of a part, left for things that don't come out even
    PartSize size;
    std::vector<std::size_t> ends;
};

/// A part that takes a little more than it may would become two.
std::size_t RoomLeft(const std::vector<BatchPlace>& places, std::size_t most)
{
    std::size_t largest = 0;
    for (const BatchPlace& place : places)
    {
        largest = std::max<std::size_t>(largest, place.vertices);
    }
    return std::min(largest, most / 16);
}

void Cut(Parts& parts, Place first, Place last)
{
    const std::size_t vertices = CountVertices(first, last);
    if (vertices <= parts.most || last - first < 2)
    {
        SortAlongCurve(first, last);
        parts.ends.push_back(static_cast<std::size_t>(last - parts.begin));
        return;
    }
    const WorldBox box = BoxOf(first, last);
    const float x = box.high.x - box.low.x;
    const float y = box.high.y - box.low.y;
    const float z = box.high.z - box.low.z;
    float Vector::* const axis = x >= y && x >= z ? &Vector::x : y >= z ? &Vector::y : &Vector::z;
    const std::size_t usual = parts.most - parts.room;
    const std::size_t count = (vertices + usual - 1) / usual;
    const std::size_t half = count / 2;
    const bool areEven = parts.size == PartSize::Even;
    const Place middle = Divide(first, last, axis, areEven ? vertices * half / count : parts.most * half);
    Cut(parts, first, middle);
    Cut(parts, middle, last);
}

} // namespace

std::vector<std::size_t> CutByPlace(std::vector<BatchPlace>& places, std::size_t most, PartSize size)
{
    for (BatchPlace& place : places)
    {
        // What is no number has no order.
        for (float Vector::* const axis : {&Vector::x, &Vector::y, &Vector::z})
        {
            place.middle.*axis = std::isfinite(place.middle.*axis) ? place.middle.*axis : 0.0f;
        }
    }
    Parts parts{places.begin(), most, size == PartSize::Even ? RoomLeft(places, most) : 0, size, {}};
    if (!places.empty())
    {
        Cut(parts, places.begin(), places.end());
    }
    return parts.ends;
}

} // namespace OV::Host::Detail
