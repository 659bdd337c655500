#include "info/PropertyPanel.h"

#include "Zerlane/Exceptions.h"
#include "Zerlane/Utils/Format.h"
#include "app/shared/ViewerLog.h"
#include "camera/DeviceNodeBufferData.h"
#include "info/InfoContext.h"
#include "widgets/QHLine.h"
#include "widgets/TextColor.h"
#include "widgets/ZRComboBox.h"
#include "widgets/ZRDoubleSpinBox.h"
#include "widgets/ZRSpinBox.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QLabel>
#include <QSignalBlocker>

using Zerlane::PropertyType;
using Zerlane::Utils::Format;

PropertyPanel::PropertyPanel(DeviceNodeBufferData* record, const Zerlane::Interface& interface,
                             InfoContext* context, QWidget* parent)
    : QWidget(parent)
    , m_record(record)
    , m_interface(interface)
    , m_context(context)
    , m_form(new QFormLayout(this))
{
    m_record->addRef();
    // Rows keep their editors' natural width instead of stretching across a wide pane.
    m_form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
}

PropertyPanel::~PropertyPanel()
{
    m_record->release();
}

QWidget* PropertyPanel::editorOf(const Zerlane::PropertyBase& property) const
{
    const auto it = m_editorMap.find(property);
    return it == m_editorMap.end() ? nullptr : it->second;
}

void PropertyPanel::addRow(const QString& label, QWidget* field)
{
    m_form->addRow(label, field);
}

void PropertyPanel::addFullWidthRow(QWidget* widget)
{
    m_form->addRow(widget);
}

void PropertyPanel::addPropertyEditors(const std::vector<Zerlane::PropertyBase>& properties, bool sendsExposureAuto)
{
    addFullWidthRow(new QHLine(this));
    // The record's property list does not change while its editors are built from it.
    const std::lock_guard lock(m_context->dataLock());
    for (const Zerlane::PropertyBase& property : properties) {
        try {
            if (QWidget* editor = createEditor(property, sendsExposureAuto))
                addEditor(property, editor);
        } catch (const Zerlane::Exception& e) {
            ViewerLog::warning(Format("Could not generate property widget: %") % e.getMessage());
        }
    }
}

QWidget* PropertyPanel::createEditor(const Zerlane::PropertyBase& property, bool sendsExposureAuto)
{
    if (property.isReadOnly())
        return nullptr;
    switch (property.type()) {
    case PropertyType::Bool: {
        auto* box = new QCheckBox(this);
        box->setChecked(Zerlane::Property<bool>(property).getValue(m_interface));
        connect(box, &QCheckBox::toggled, this, &PropertyPanel::on_nodeSetPropertyBool);
        return box;
    }
    case PropertyType::Int: {
        auto* spin = new ZRSpinBox(this);
        // A fixed range whatever the camera's limits; the camera refuses what it cannot take.
        spin->setRange(-65536, 65535);
        spin->setValue(Zerlane::Property<int32_t>(property).getValue(m_interface));
        spin->setKeyboardTracking(false);
        connect(spin, &QSpinBox::valueChanged, this, &PropertyPanel::on_nodeSetPropertyInt);
        return spin;
    }
    case PropertyType::Float: {
        // The spin box keeps its own default range and two decimals.
        auto* spin = new ZRDoubleSpinBox(this);
        spin->setValue(Zerlane::Property<float>(property).getValue(m_interface));
        spin->setKeyboardTracking(false);
        connect(spin, &QDoubleSpinBox::valueChanged, this, &PropertyPanel::on_nodeSetPropertyFloat);
        return spin;
    }
    case PropertyType::String: {
        auto* label = new QLabel("Not supported", this);
        setTextColor(label, QColor(0xff, 0, 0));
        return label;
    }
    case PropertyType::ExposureAuto: {
        auto* combo = new ZRComboBox(this);
        combo->addItem("Manual", int(Zerlane::EXPOSURE_AUTO_MANUAL));
        combo->addItem("Aperture Priority", int(Zerlane::EXPOSURE_AUTO_APERTURE_PRIORITY));
        showValue(combo, Zerlane::Property<Zerlane::ExposureAuto>(property).getValue(m_interface));
        if (sendsExposureAuto)
            connect(combo, &QComboBox::currentIndexChanged, this, &PropertyPanel::on_nodeSetPropertyExposureAuto);
        return combo;
    }
    default:
        return nullptr;
    }
}

void PropertyPanel::addEditor(const Zerlane::PropertyBase& property, QWidget* editor, EditorFollowsCamera follows)
{
    // Writable through this program's interface only while it holds control.
    editor->setEnabled(!property.isReadOnly(m_interface));
    const QString name = QString::fromStdString(property.name());
    editor->setObjectName(name);
    m_editors.append(editor);
    addRow(name, editor);
    if (follows == EditorFollowsCamera::Yes)
        m_editorMap[property] = editor;
}

void PropertyPanel::refreshEditor(const Zerlane::PropertyBase& property)
{
    if (QWidget* editor = editorOf(property))
        showValue(editor, property.getValue(m_interface, property.type()));
}

void PropertyPanel::showValue(QWidget* editor, const Zerlane::PropertyValue& value)
{
    if (auto* box = qobject_cast<QCheckBox*>(editor); box && std::holds_alternative<bool>(value))
        box->setChecked(std::get<bool>(value));
    else if (auto* spin = qobject_cast<QSpinBox*>(editor); spin && std::holds_alternative<int32_t>(value))
        spin->setValue(std::get<int32_t>(value));
    else if (auto* real = qobject_cast<QDoubleSpinBox*>(editor); real && std::holds_alternative<float>(value))
        real->setValue(std::get<float>(value));
    else if (auto* combo = qobject_cast<QComboBox*>(editor); combo && std::holds_alternative<Zerlane::ExposureAuto>(value))
        combo->setCurrentIndex(combo->findData(int(std::get<Zerlane::ExposureAuto>(value))));
}

QWidget* PropertyPanel::sendingEditor() const
{
    auto* editor = qobject_cast<QWidget*>(sender());
    return editor && editor->isEnabled() ? editor : nullptr;
}

template <class T>
void PropertyPanel::writeEdit(T value)
{
    QWidget* editor = sendingEditor();
    if (!editor)
        return;
    const QString name = editor->objectName();
    if (m_context->set<T>(m_record, name, value))
        return;
    // The camera's own value needs no sending back.
    const QSignalBlocker quiet(editor);
    showValue(editor, m_context->get<T>(m_record, name));
}

void PropertyPanel::on_nodeSetPropertyBool(bool value)
{
    writeEdit<bool>(value);
}

void PropertyPanel::on_nodeSetPropertyInt(int value)
{
    writeEdit<int32_t>(value);
}

void PropertyPanel::on_nodeSetPropertyFloat(double value)
{
    writeEdit<float>(float(value));
}

void PropertyPanel::on_nodeSetPropertyExposureAuto(int index)
{
    auto* combo = qobject_cast<QComboBox*>(sender());
    if (combo && index >= 0)
        writeEdit<Zerlane::ExposureAuto>(Zerlane::ExposureAuto(combo->itemData(index).toInt()));
}

void PropertyPanel::on_nodeSetPropertyString()
{
    // Strings are shown as not supported: there is nothing to send.
}
