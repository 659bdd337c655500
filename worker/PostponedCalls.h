#pragma once

#include "app/shared/Singleton.h"

#include <QMutex>

#include <cstdint>
#include <vector>

class QObject;
class QWidget;

// GUI changes held back while a modal widget is open, so that nothing under a message box is swapped
// or deleted. The message boxes run the kept calls once the last modal widget has closed.
class PostponedCalls : public Singleton<PostponedCalls> {
public:
    enum CallType : int32_t { SetWidget = 1 }; // install a content widget in the info panel

    struct Call {
        int32_t type;
        QObject* receiver;
        void* argument; // SetWidget: the QWidget* to install
    };

    // Overwrites the first kept call of the same type (receivers are not compared), or appends.
    void addOrReplace(const Call& call);
    void append(const Call& call);
    // A SetWidget call, added with the replace rule: only the newest content survives.
    void setWidget(QObject* receiver, QWidget* widget);
    // Posts the kept SetWidget calls to their receivers as InfoWidgetSetWidgetEvent and forgets every
    // kept call. Only posts: nothing of the GUI runs here.
    void run();
    int count() const;

private:
    friend class Singleton<PostponedCalls>;
    PostponedCalls() = default;

    std::vector<Call> m_calls;
    mutable QMutex m_mutex;
};
