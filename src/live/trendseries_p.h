#pragma once

#include "platform/stack/opcuastatuscodes.h"
#include "platform/stack/opcuatypes.h"

#include <QtCore/QSharedData>

#include <cmath>
#include <limits>
#include <vector>

/// One value of a trend. Times are ticks, as in UaDateTime.
struct TrendPoint
{
    qint64 time = 0;
    double value = std::numeric_limits<double>::quiet_NaN();
    OpcUa_StatusCode status = OpcUa_Good;

    /// Nothing is drawn here, and no line over it.
    bool isGap() const { return !std::isfinite(value) || OpcUa_IsBad(status); }
    bool isUncertain() const { return (status & 0xc0000000u) == 0x40000000u; }
};
/// NaN equals itself here.
bool operator==(const TrendPoint& a, const TrendPoint& b);

/// What a stretch of points comes to.
struct TrendSummary
{
    double low = std::numeric_limits<double>::infinity(); ///< of what is drawn
    double high = -std::numeric_limits<double>::infinity();
    bool hasUncertain = false;

    bool isEmpty() const { return low > high; } ///< nothing is drawn
    void add(const TrendPoint& point);
    void add(const TrendSummary& other);
};

/// The points of one series in the order of their times; those of equal times in the order in which
/// they came. They may come in any order. What is there already (time, value and status) does not
/// come in again: servers repeat the last value after a reconnect, and history overlaps.
///
/// Points stand in blocks, with a summary for each block and each leaf of it, so that the summary
/// of any stretch takes a look at few of them. A copy shares the blocks until one of the two
/// changes.
class TrendSeries
{
public:
    static constexpr qsizetype fanOut = 16;
    static constexpr qsizetype blockSize = fanOut * fanOut * fanOut;

    /// Good until the series changes.
    struct Position
    {
        qsizetype block = 0;
        qsizetype offset = 0;
        bool operator==(const Position& other) const
        {
            return block == other.block && offset == other.offset;
        }
        bool operator!=(const Position& other) const { return !(*this == other); }
    };

    void insert(const TrendPoint& point);
    /// Many at a time, which is much faster for late ones.
    void insert(std::vector<TrendPoint> points);
    void dropOldest(qsizetype count = 1);

    qsizetype size() const { return m_size; }
    bool isEmpty() const { return m_size == 0; }
    Position begin() const { return {0, m_dropped}; }
    Position end() const { return {qsizetype(m_blocks.size()), 0}; }
    Position next(Position position) const;
    Position previous(Position position) const;
    TrendPoint at(Position position) const;
    TrendPoint first() const { return at(begin()); }
    TrendPoint last() const { return at(previous(end())); }

    /// The first point at `time` or later, not before `from`.
    Position lowerBound(qint64 time, Position from) const;
    Position lowerBound(qint64 time) const { return lowerBound(time, begin()); }
    /// The first point later than `time`.
    Position upperBound(qint64 time) const;

    /// Of the points from `from` up to the one before `to`.
    TrendSummary summary(Position from, Position to) const;
    qsizetype count(Position from, Position to) const;

private:
    struct Block : QSharedData
    {
        std::vector<qint64> times;
        std::vector<double> values;
        std::vector<OpcUa_StatusCode> statuses;
        std::vector<TrendSummary> leaves;   // of fanOut points each
        std::vector<TrendSummary> branches; // of fanOut leaves each

        qsizetype size() const { return qsizetype(times.size()); }
        TrendPoint at(qsizetype offset) const;
        void push(const TrendPoint& point);
        void summarize(qsizetype from, qsizetype to, TrendSummary& sum) const;
    };
    /// A block, and what a search has to know of it without a look inside.
    struct Entry
    {
        qint64 first = 0;
        qint64 last = 0;
        TrendSummary total;
        QSharedDataPointer<Block> block;

        void push(const TrendPoint& point);
    };
    using Points = std::vector<TrendPoint>;

    const Block& block(qsizetype index) const { return *m_blocks[std::size_t(index)].block; }
    static qsizetype placeOf(qint64 time, const Entry& entry, qsizetype first);
    bool isKnown(const TrendPoint& point, const Points& before, qsizetype block) const;
    void push(const TrendPoint& point);
    void merge(qsizetype index, Points::const_iterator from, Points::const_iterator to);

    std::vector<Entry> m_blocks;
    qsizetype m_dropped = 0; // of the first block
    qsizetype m_size = 0;
};
