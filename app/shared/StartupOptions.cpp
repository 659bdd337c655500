#include "app/shared/StartupOptions.h"

#include <atomic>

namespace {
// Set on the GUI thread before the other threads start, read from any thread.
std::atomic<bool> g_standalone{false};
std::atomic<quint16> g_port{0};
std::atomic<bool> g_disableDepth{false};
std::atomic<bool> g_disableColor{false};
std::atomic<bool> g_disableAudio{false};
std::atomic<bool> g_showHidden{false};
std::atomic<bool> g_disablePopups{false};
} // namespace

bool StartupOptions::standalone() { return g_standalone; }
void StartupOptions::setStandalone(bool on) { g_standalone = on; }
quint16 StartupOptions::port() { return g_port; }
void StartupOptions::setPort(quint16 port) { g_port = port; }
bool StartupOptions::disableDepth() { return g_disableDepth; }
void StartupOptions::setDisableDepth(bool on) { g_disableDepth = on; }
bool StartupOptions::disableColor() { return g_disableColor; }
void StartupOptions::setDisableColor(bool on) { g_disableColor = on; }
bool StartupOptions::disableAudio() { return g_disableAudio; }
void StartupOptions::setDisableAudio(bool on) { g_disableAudio = on; }
bool StartupOptions::showHidden() { return g_showHidden; }
void StartupOptions::setShowHidden(bool on) { g_showHidden = on; }
bool StartupOptions::disablePopups() { return g_disablePopups; }
void StartupOptions::setDisablePopups(bool on) { g_disablePopups = on; }
