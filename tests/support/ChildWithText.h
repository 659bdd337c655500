#pragma once

#include <QObject>
#include <QString>

namespace ViewerTest {

// The first child of `parent` of type T (a button, a check box) showing `text`, or null.
template <class T>
T* childWithText(const QObject* parent, const QString& text)
{
    for (T* child : parent->findChildren<T*>()) {
        if (child->text() == text)
            return child;
    }
    return nullptr;
}

} // namespace ViewerTest
