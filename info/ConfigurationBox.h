#pragma once

#include "Zerlane/Enums.h"
#include "info/PendingConfiguration.h"
#include "widgets/ZRComboBox.h"

#include <QList>
#include <QPair>
#include <QString>

#include <algorithm>
#include <functional>
#include <set>
#include <vector>

// The combo boxes of a node's configuration, one per field, each item carrying the field's value as
// its user data: everything is read and selected by that value, never by the text. The combos hold
// the user's edits until they are applied or discarded; they are compared with the configuration
// the node runs now (`current`) and sent on as a whole (`send`).
template <class Configuration>
class ConfigurationBox : public PendingConfiguration {
public:
    struct Field {
        QString label;                                // the form row, "Format :"
        std::function<int(const Configuration&)> read;
        std::function<void(Configuration&, int)> write;
        std::function<QString(int)> itemText;         // the combo item of a value
        QString changeLine;                           // " - ... changed from %1 to %2.\n"
        std::function<QString(int)> changeText;      // a value in that line
        std::vector<int> fixedValues;                 // the items, when not the offered values
    };

    ConfigurationBox(std::vector<Field> fields, std::function<Configuration()> current,
                     std::function<void(const Configuration&)> send)
        : m_fields(std::move(fields)), m_current(std::move(current)), m_send(std::move(send))
    {
    }

    bool hasChanges() const override { return differsFrom(m_current()); }
    QString changesText() const override { return changesFrom(m_current()); }
    void discard() override { select(m_current()); }
    void apply() override { m_send(selection(m_current())); }

    // The frame format and frame rate fields that depth and colour configurations share.
    static Field frameFormatField()
    {
        return {"Format :", [](const Configuration& c) { return int(c.frameFormat); },
                [](Configuration& c, int v) { c.frameFormat = Zerlane::FrameFormat(v); }, formatWithResolution,
                " - Frame format changed from %1 to %2.\n", formatName, {}};
    }
    static Field frameRateField()
    {
        return {"Frame rate :", [](const Configuration& c) { return int(c.frameRate); },
                [](Configuration& c, int v) { c.frameRate = v; }, [](int v) { return QString("%1 fps").arg(v); },
                " - Frame rate changed from %1fps to %2fps.\n", [](int v) { return QString::number(v); }, {}};
    }

    // One combo per field listing each distinct offered value once, in increasing order, with the
    // current configuration selected. Returns the (label, combo) rows in field order.
    QList<QPair<QString, QWidget*>> build(QWidget* owner, const std::vector<Configuration>& offered)
    {
        QList<QPair<QString, QWidget*>> rows;
        for (const Field& field : m_fields) {
            auto* combo = new ZRComboBox(owner);
            for (int value : valuesOf(field, offered))
                combo->addItem(field.itemText(value), value);
            m_combos.append(combo);
            rows.append({field.label, combo});
        }
        discard();
        return rows;
    }

    void select(const Configuration& configuration)
    {
        for (int i = 0; i < m_combos.size(); ++i)
            m_combos[i]->setCurrentIndex(m_combos[i]->findData(m_fields[size_t(i)].read(configuration)));
    }

    QComboBox* combo(int field) const { return m_combos.value(field); }

private:
    bool differsFrom(const Configuration& current) const
    {
        for (int i = 0; i < m_combos.size(); ++i) {
            if (changed(i, current))
                return true;
        }
        return false;
    }

    // One line per changed field, in field order.
    QString changesFrom(const Configuration& current) const
    {
        QString text;
        for (int i = 0; i < m_combos.size(); ++i) {
            if (!changed(i, current))
                continue;
            const Field& field = m_fields[size_t(i)];
            text += field.changeLine.arg(field.changeText(field.read(current)), field.changeText(selected(i)));
        }
        return text;
    }

    // `base` with every field replaced by its combo's selection.
    Configuration selection(Configuration base) const
    {
        for (int i = 0; i < m_combos.size(); ++i)
            m_fields[size_t(i)].write(base, selected(i));
        return base;
    }

    static QString formatName(int format)
    {
        return QString::fromStdString(Zerlane::FrameFormat_toString(Zerlane::FrameFormat(format)));
    }
    static QString formatWithResolution(int format)
    {
        int32_t width = 0;
        int32_t height = 0;
        Zerlane::FrameFormat_toResolution(Zerlane::FrameFormat(format), &width, &height);
        return QString("%1 (%2x%3)").arg(formatName(format)).arg(width).arg(height);
    }

    static std::vector<int> valuesOf(const Field& field, const std::vector<Configuration>& offered)
    {
        if (!field.fixedValues.empty())
            return field.fixedValues;
        std::set<int> distinct;
        for (const Configuration& configuration : offered)
            distinct.insert(field.read(configuration));
        return std::vector<int>(distinct.begin(), distinct.end());
    }

    int selected(int field) const { return m_combos[field]->currentData().toInt(); }

    bool changed(int field, const Configuration& current) const
    {
        const QVariant data = m_combos[field]->currentData();
        return !data.isValid() || data.toInt() != m_fields[size_t(field)].read(current);
    }

    std::vector<Field> m_fields;
    std::function<Configuration()> m_current;
    std::function<void(const Configuration&)> m_send;
    QList<QComboBox*> m_combos;
};
