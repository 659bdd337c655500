#pragma once

#include "Zerlane/Interface.h"
#include "Zerlane/Property.h"

#include <QList>
#include <QWidget>

#include <map>
#include <vector>

class DeviceNodeBufferData;
class InfoContext;
class QFormLayout;

// What the device page and the node pages share: a form of label/widget rows, a reference on the
// record shown (so a camera unplugged meanwhile leaves the page valid), and one editor per camera
// property, built from the property's type. Edits go to the camera through the context; a refused
// value is replaced by the one read back, so an editor never shows what the camera did not take.
class PropertyPanel : public QWidget {
    Q_OBJECT

public:
    ~PropertyPanel() override;

    DeviceNodeBufferData* record() const { return m_record; }
    // Every property editor, in creation order.
    const QList<QWidget*>& editors() const { return m_editors; }
    // The editor of a property, or null.
    QWidget* editorOf(const Zerlane::PropertyBase& property) const;

public slots:
    void on_nodeSetPropertyBool(bool value);
    void on_nodeSetPropertyInt(int value);
    void on_nodeSetPropertyFloat(double value);
    void on_nodeSetPropertyExposureAuto(int index);
    void on_nodeSetPropertyString();

protected:
    PropertyPanel(DeviceNodeBufferData* record, const Zerlane::Interface& interface, InfoContext* context,
                  QWidget* parent);

    void addRow(const QString& label, QWidget* field);
    void addFullWidthRow(QWidget* widget);
    // A separator, then one row per editable property in list order. `sendsExposureAuto` false leaves
    // an ExposureAuto combo unconnected: the device page offers no setter of that type.
    void addPropertyEditors(const std::vector<Zerlane::PropertyBase>& properties, bool sendsExposureAuto);
    enum class EditorFollowsCamera { Yes, No };
    // Enabled while this program may write the property; named after it; listed and given a row. An
    // editor that follows the camera also shows the changes it reports.
    void addEditor(const Zerlane::PropertyBase& property, QWidget* editor,
                   EditorFollowsCamera follows = EditorFollowsCamera::Yes);
    // Shows the camera's current value of a property in its editor, if it has one. Signals are not
    // blocked: a changed editor writes the same value back. Throws what the camera throws.
    void refreshEditor(const Zerlane::PropertyBase& property);

    InfoContext* context() const { return m_context; }
    const Zerlane::Interface& interface() const { return m_interface; }

private:
    QWidget* createEditor(const Zerlane::PropertyBase& property, bool sendsExposureAuto);
    // The sending editor and its property name when the edit is to be sent; null for a disabled one.
    QWidget* sendingEditor() const;
    template <class T>
    void writeEdit(T value);
    // Puts a value read from the camera into an editor of the matching kind.
    static void showValue(QWidget* editor, const Zerlane::PropertyValue& value);

    DeviceNodeBufferData* m_record;
    Zerlane::Interface m_interface;
    InfoContext* m_context;
    QFormLayout* m_form;
    QList<QWidget*> m_editors;
    std::map<Zerlane::PropertyBase, QWidget*> m_editorMap;
};
