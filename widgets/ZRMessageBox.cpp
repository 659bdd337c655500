#include "widgets/ZRMessageBox.h"

#include "app/shared/StartupOptions.h"
#include "worker/PostponedCalls.h"

#include <QApplication>

ZRMessageBox::ZRMessageBox(QMessageBox::Icon icon, const QString& title, const QString& text,
                           QMessageBox::StandardButtons buttons)
    : QMessageBox(icon, title, text, buttons, nullptr, Qt::Dialog | Qt::MSWindowsFixedSizeDialogHint)
{
}

int ZRMessageBox::exec()
{
    const int result = QMessageBox::exec();
    // A box closed inside another modal dialog leaves the calls for the outermost one.
    if (!QApplication::activeModalWidget())
        PostponedCalls::instance()->run();
    return result;
}

void ZRMessageBox::warning(const QString& text)
{
    showBox(QMessageBox::Warning, QStringLiteral("Warning"), text);
}

void ZRMessageBox::error(const QString& text)
{
    showBox(QMessageBox::Critical, QStringLiteral("Error"), text);
}

void ZRMessageBox::showBox(QMessageBox::Icon icon, const QString& title, const QString& text)
{
    if (StartupOptions::disablePopups())
        return;
    ZRMessageBox box(icon, title, text, QMessageBox::Ok);
    box.exec();
}
