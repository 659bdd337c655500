#include "views/StandardDeviationDisplayWidget.h"

#include "camera/DeviationSummary.h"
#include "camera/RegionOfInterest.h"

#include <QFormLayout>
#include <QLabel>
#include <QLayout>

namespace {

QString metres(float value)
{
    return QString("%1m").arg(double(value), 0, 'g', -1);
}

} // namespace

StandardDeviationDisplayWidget::StandardDeviationDisplayWidget(QWidget* parent)
    : BufferDisplayWidget(parent)
{
    setWindowTitle("StandardDeviationDisplayWidget");
    m_median = addRow("Median standard deviation:", "label", "medStandardDeviationLabel");
    m_minimum = addRow("Minimum standard deviation:", "label_2", "minStandardDeviationLabel");
    m_maximum = addRow("Maxiumum standard deviation:", "label_3", "maxStandardDeviationLabel");
    m_population = addRow("Population size:", "label_4", "populationSizeLabel");
    m_roi = addRow("ROI:", "label_5", "roiLabel");
    showRegion(RegionOfInterest());
}

QLabel* StandardDeviationDisplayWidget::addRow(const QString& title, const char* titleName, const char* valueName)
{
    auto* form = findChild<QFormLayout*>("statisticsLayout");
    if (!form) {
        auto* panel = new QWidget(this);
        panel->setObjectName("statisticsPanel");
        form = new QFormLayout(panel);
        form->setObjectName("statisticsLayout");
        form->setContentsMargins(0, 0, 0, 0);
        layout()->addWidget(panel);
    }
    auto* titleLabel = new QLabel(title);
    titleLabel->setObjectName(QString("statistics_%1").arg(titleName));
    auto* value = new QLabel("-");
    value->setObjectName(valueName);
    form->addRow(titleLabel, value);
    return value;
}

void StandardDeviationDisplayWidget::showSummary(const DeviationSummary& summary, unsigned frames, unsigned capacity)
{
    if (summary.empty) {
        for (QLabel* label : {m_median, m_minimum, m_maximum, m_population})
            label->setText("-");
        return;
    }
    m_median->setText(metres(summary.median));
    m_minimum->setText(metres(summary.minimum));
    m_maximum->setText(metres(summary.maximum));
    m_population->setText(QString("%1/%2").arg(frames).arg(capacity));
}

void StandardDeviationDisplayWidget::showRegion(const RegionOfInterest& roi)
{
    m_roi->setText(roi.isSet() ? QString("X,Y = (%1, %2)     W,H = (%3, %4)").arg(roi.x).arg(roi.y).arg(roi.width).arg(roi.height)
                               : QString("No ROI selected"));
}

QString StandardDeviationDisplayWidget::valueText(const char* labelName) const
{
    const auto* label = findChild<QLabel*>(labelName);
    return label ? label->text() : QString();
}
