#pragma once

#include <QApplication>

// The application object. A camera service exception that escapes into event delivery is logged and
// the event dropped; any other exception is a bug and ends the process.
class ViewerApplication : public QApplication {
    Q_OBJECT

public:
    ViewerApplication(int& argc, char** argv);

    bool notify(QObject* receiver, QEvent* event) override;
};
