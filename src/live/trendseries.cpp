#include "trendseries_p.h"

#include <algorithm>
#include <iterator>

// How many points of one time are looked at for the same one.
constexpr qsizetype mostRepeated = 8;

static bool isEarlier(const TrendPoint& a, const TrendPoint& b)
{
    return a.time < b.time;
}

bool operator==(const TrendPoint& a, const TrendPoint& b)
{
    return a.time == b.time && a.status == b.status &&
           (a.value == b.value || (std::isnan(a.value) && std::isnan(b.value)));
}

void TrendSummary::add(const TrendPoint& point)
{
    if (point.isGap())
        return;
    low = std::min(low, point.value);
    high = std::max(high, point.value);
    hasUncertain = hasUncertain || point.isUncertain();
}

void TrendSummary::add(const TrendSummary& other)
{
    low = std::min(low, other.low);
    high = std::max(high, other.high);
    hasUncertain = hasUncertain || other.hasUncertain;
}

TrendPoint TrendSeries::Block::at(qsizetype offset) const
{
    const auto i = std::size_t(offset);
    return {times[i], values[i], statuses[i]};
}

void TrendSeries::Block::push(const TrendPoint& point)
{
    if (size() % fanOut == 0)
        leaves.emplace_back();
    if (size() % (fanOut * fanOut) == 0)
        branches.emplace_back();
    times.push_back(point.time);
    values.push_back(point.value);
    statuses.push_back(point.status);
    leaves.back().add(point);
    branches.back().add(point);
}

void TrendSeries::Entry::push(const TrendPoint& point)
{
    Block* filled = block.data();
    if (filled->times.empty())
        first = point.time;
    last = point.time;
    total.add(point);
    filled->push(point);
}

void TrendSeries::Block::summarize(qsizetype from, qsizetype to, TrendSummary& sum) const
{
    constexpr qsizetype branch = fanOut * fanOut;
    while (from < to) {
        if (from % branch == 0 && from + branch <= to) {
            sum.add(branches[std::size_t(from / branch)]);
            from += branch;
        } else if (from % fanOut == 0 && from + fanOut <= to) {
            sum.add(leaves[std::size_t(from / fanOut)]);
            from += fanOut;
        } else {
            sum.add(at(from++));
        }
    }
}

// Whether the same point stands in front of the place of `point`: after `before`, which comes after
// the blocks in front of `block`.
bool TrendSeries::isKnown(const TrendPoint& point, const Points& before, qsizetype block) const
{
    auto in = before.crbegin();
    Position position{block, 0};
    for (qsizetype i = 0; i < mostRepeated; ++i) {
        TrendPoint candidate;
        if (in != before.crend()) {
            candidate = *in++;
        } else if (position != begin() && position.block + position.offset > 0) {
            position = previous(position);
            candidate = at(position);
        } else {
            return false;
        }
        if (candidate.time != point.time)
            return false;
        if (candidate == point)
            return true;
    }
    return false;
}

void TrendSeries::push(const TrendPoint& point)
{
    if (isKnown(point, {}, qsizetype(m_blocks.size())))
        return;
    if (m_blocks.empty() || block(end().block - 1).size() == blockSize)
        m_blocks.emplace_back().block = new Block;
    m_blocks.back().push(point);
    ++m_size;
}

void TrendSeries::insert(const TrendPoint& point)
{
    if (isEmpty() || point.time >= last().time)
        push(point);
    else
        insert(Points{point});
}

void TrendSeries::insert(std::vector<TrendPoint> points)
{
    if (!std::is_sorted(points.begin(), points.end(), isEarlier))
        std::stable_sort(points.begin(), points.end(), isEarlier);
    for (auto from = points.cbegin(); from != points.cend();) {
        if (isEmpty() || from->time >= last().time) {
            push(*from++);
            continue;
        }
        // The last block that begins at that time or earlier takes it, and what else comes before
        // the next one; for the last block, what comes before its end.
        const auto after =
            std::partition_point(m_blocks.cbegin() + 1, m_blocks.cend(),
                                 [from](const Entry& entry) { return entry.first <= from->time; });
        TrendPoint limit = last();
        if (after != m_blocks.cend())
            limit.time = after->first;
        const auto to = std::lower_bound(from, points.cend(), limit, isEarlier);
        merge(qsizetype(after - m_blocks.cbegin()) - 1, from, to);
        from = to;
    }
}

void TrendSeries::merge(qsizetype index, Points::const_iterator from, Points::const_iterator to)
{
    const Block& old = block(index);
    const qsizetype first = index == 0 ? m_dropped : 0;
    Points merged;
    merged.reserve(std::size_t(old.size() - first + (to - from)));
    for (qsizetype i = first; i < old.size() || from != to;) {
        if (from == to || (i < old.size() && old.times[std::size_t(i)] <= from->time)) {
            merged.push_back(old.at(i++));
        } else {
            if (!isKnown(*from, merged, index))
                merged.push_back(*from);
            ++from;
        }
    }
    m_size += qsizetype(merged.size()) - (old.size() - first);
    if (index == 0)
        m_dropped = 0;
    // What does not fit is parted so that each block has room for more.
    const auto all = qsizetype(merged.size());
    const qsizetype pieces = all <= blockSize ? 1 : all / (blockSize * 3 / 4) + 1;
    std::vector<Entry> entries;
    for (qsizetype piece = 0; piece < pieces; ++piece) {
        entries.emplace_back().block = new Block;
        for (qsizetype i = all * piece / pieces; i < all * (piece + 1) / pieces; ++i)
            entries.back().push(merged[std::size_t(i)]);
    }
    const auto place = m_blocks.erase(m_blocks.begin() + index);
    m_blocks.insert(place, std::make_move_iterator(entries.begin()),
                    std::make_move_iterator(entries.end()));
}

void TrendSeries::dropOldest(qsizetype count)
{
    count = std::min(count, m_size);
    m_size -= count;
    m_dropped += count;
    auto kept = m_blocks.cbegin();
    for (; kept != m_blocks.cend() && m_dropped >= kept->block->size(); ++kept)
        m_dropped -= kept->block->size();
    m_blocks.erase(m_blocks.cbegin(), kept);
}

TrendSeries::Position TrendSeries::next(Position position) const
{
    if (++position.offset < block(position.block).size())
        return position;
    return {position.block + 1, 0};
}

TrendSeries::Position TrendSeries::previous(Position position) const
{
    if (position.offset > 0)
        return {position.block, position.offset - 1};
    return {position.block - 1, block(position.block - 1).size() - 1};
}

TrendPoint TrendSeries::at(Position position) const
{
    return block(position.block).at(position.offset);
}

// Of the first point of a block at `time` or later, from `first` on; there is one. Most series are
// even: it is looked for around where it then would be.
qsizetype TrendSeries::placeOf(qint64 time, const Entry& entry, qsizetype first)
{
    const auto& times = entry.block->times;
    const auto size = qsizetype(times.size());
    const double part = (double(time) - double(entry.first)) /
                        std::max(1., double(entry.last) - double(entry.first));
    qsizetype low = std::clamp(qsizetype(std::clamp(part, 0., 1.) * double(size)), first, size - 1);
    qsizetype high = low;
    qsizetype stride = 1;
    if (times[std::size_t(low)] < time) {
        for (; high < size && times[std::size_t(high)] < time; stride *= 2) {
            low = high;
            high = std::min(high + stride, size);
        }
    } else {
        for (; low > first && times[std::size_t(low)] >= time; stride *= 2) {
            high = low;
            low = std::max(low - stride, first);
        }
    }
    return std::lower_bound(times.cbegin() + low, times.cbegin() + high, time) - times.cbegin();
}

TrendSeries::Position TrendSeries::lowerBound(qint64 time, Position from) const
{
    // Mostly a little further on: in larger and larger strides, then back.
    const auto endsBefore = [time](const Entry& entry) { return entry.last < time; };
    auto low = m_blocks.cbegin() + from.block;
    qsizetype stride = 1;
    while (stride < m_blocks.cend() - low && endsBefore(low[stride])) {
        low += stride;
        stride *= 2;
    }
    const auto high = low + std::min<qsizetype>(stride, m_blocks.cend() - low);
    const auto found = std::partition_point(low, high, endsBefore);
    if (found == m_blocks.cend())
        return end();
    const qsizetype index = found - m_blocks.cbegin();
    const qsizetype first = index == from.block ? from.offset : index == 0 ? m_dropped : 0;
    return {index, placeOf(time, *found, first)};
}

TrendSeries::Position TrendSeries::upperBound(qint64 time) const
{
    return time == std::numeric_limits<qint64>::max() ? end() : lowerBound(time + 1);
}

TrendSummary TrendSeries::summary(Position from, Position to) const
{
    TrendSummary sum;
    for (qsizetype i = from.block; i <= to.block && i < end().block; ++i) {
        const qsizetype first = i == from.block ? from.offset : 0;
        if (first == 0 && i != to.block)
            sum.add(m_blocks[std::size_t(i)].total);
        else
            block(i).summarize(first, i == to.block ? to.offset : block(i).size(), sum);
    }
    return sum;
}

qsizetype TrendSeries::count(Position from, Position to) const
{
    qsizetype sum = to.offset - from.offset;
    for (qsizetype i = from.block; i < to.block; ++i)
        sum += block(i).size();
    return sum;
}
