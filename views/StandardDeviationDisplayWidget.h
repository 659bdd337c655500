#pragma once

#include "views/BufferDisplayWidget.h"

struct DeviationSummary;
struct RegionOfInterest;
class QLabel;

// The view of a depth node's standard-deviation buffer: the noise image of the region of interest,
// and under it the median, minimum and maximum of the noise, how many frames it is taken over, and
// the region, refreshed once a second by the main window.
class StandardDeviationDisplayWidget : public BufferDisplayWidget {
    Q_OBJECT

public:
    explicit StandardDeviationDisplayWidget(QWidget* parent = nullptr);

    // "-" for every value of an empty image.
    void showSummary(const DeviationSummary& summary, unsigned frames, unsigned capacity);
    // "X,Y = (..)     W,H = (..)", or "No ROI selected".
    void showRegion(const RegionOfInterest& roi);

    QString valueText(const char* labelName) const;

private:
    QLabel* addRow(const QString& title, const char* titleName, const char* valueName);

    QLabel* m_median;
    QLabel* m_minimum;
    QLabel* m_maximum;
    QLabel* m_population;
    QLabel* m_roi;
};
