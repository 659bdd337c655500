#pragma once

#include "Zerlane/Utils/HMLogger.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <mutex>

namespace ViewerTest {

// Collects what the camera library's logger is given while it lives. Quiet: nothing goes to stderr
// meanwhile (for tests that expect many warnings).
class LogRecorder {
public:
    explicit LogRecorder(bool quiet = false)
        : m_quiet(quiet)
    {
        m_logger = Zerlane::Utils::HMLogger::instance();
        if (m_quiet)
            m_logger->setEchoToStderr(false);
        m_id = m_logger->addListener([this](Zerlane::Utils::HMLogger::Level level, const std::string& text) {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_entries.append({level, QString::fromStdString(text)});
        });
    }
    ~LogRecorder()
    {
        m_logger->removeListener(m_id);
        if (m_quiet)
            m_logger->setEchoToStderr(true);
        m_logger->release();
    }
    // Every message with its level's name in front.
    QStringList lines() const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        QStringList result;
        for (const Entry& entry : m_entries)
            result << QString::fromStdString(Zerlane::Utils::HMLogger::levelName(entry.level)) + ": " + entry.text;
        return result;
    }
    // The warnings' texts alone.
    QStringList warnings() const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        QStringList result;
        for (const Entry& entry : m_entries) {
            if (entry.level == Zerlane::Utils::HMLogger::Warning)
                result << entry.text;
        }
        return result;
    }
    bool contains(const QString& text) const
    {
        for (const QString& line : lines()) {
            if (line.contains(text))
                return true;
        }
        return false;
    }

private:
    struct Entry {
        Zerlane::Utils::HMLogger::Level level;
        QString text;
    };
    Zerlane::Utils::HMLogger* m_logger = nullptr;
    bool m_quiet;
    int m_id = 0;
    mutable std::mutex m_mutex;
    QList<Entry> m_entries;
};

} // namespace ViewerTest
