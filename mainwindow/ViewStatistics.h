#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QString>

#include <vector>

class BufferData;
class NodeData;

// The rates shown under every view once a second: events received per node, frames copied per shown
// buffer, and paints per view, each over the time since the last tick. The counts are taken (read and
// reset) from the records, where the event thread adds to them.
class ViewStatistics {
public:
    ViewStatistics();

    // Closes the interval that ends now: each node's event rate from its sample count, which is reset.
    void closeInterval(const std::vector<NodeData*>& nodes);
    // The info line under a view of `buffer` that painted `paints` times in the interval: its frame
    // rate (the buffer's count is reset), its node's event rate and the paint rate.
    QString takeViewLine(BufferData* buffer, int paints);
    // Starts the next interval.
    void restart();

    double eventRate(const NodeData* node) const { return m_eventRates.value(node, 0.0); }
    // "Frame rate : %1      Event rate : %2      Paint rate : %3", each rate without decimals, at least
    // two characters wide.
    static QString infoLine(double frameRate, double eventRate, double paintRate);

private:
    QElapsedTimer m_clock;
    double m_factor = 1.0; // counts to rates over the closed interval
    QHash<const NodeData*, double> m_eventRates;
};
