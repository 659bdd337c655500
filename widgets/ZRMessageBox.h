#pragma once

#include <QMessageBox>

// The program's message box. After it closes, and once no modal widget is left open, it runs the
// calls that were held back while boxes were shown.
class ZRMessageBox : public QMessageBox {
    Q_OBJECT
public:
    ZRMessageBox(QMessageBox::Icon icon, const QString& title, const QString& text,
                 QMessageBox::StandardButtons buttons);

    int exec() override;

    // "Warning" / "Error" boxes with one Ok button; nothing at all when pop-ups are disabled.
    static void warning(const QString& text);
    static void error(const QString& text);

private:
    static void showBox(QMessageBox::Icon icon, const QString& title, const QString& text);
};
