#include "Zerlane/sim/SimulatorControl.h"

#include "SimWorld.h"

namespace Zerlane::Sim {

using sim::SimWorld;

void Control::reset()
{
    SimWorld::instance().reset();
}

std::string Control::addCamera(const std::string& serial)
{
    return SimWorld::instance().addCamera(serial);
}

void Control::removeCamera(const std::string& serial)
{
    SimWorld::instance().removeCamera(serial);
}

std::vector<std::string> Control::cameras()
{
    return SimWorld::instance().cameras();
}

void Control::addNode(const std::string& serial, NodeKind kind)
{
    SimWorld::instance().addNode(serial, kind);
}

void Control::removeNode(const std::string& serial, NodeKind kind)
{
    SimWorld::instance().removeNode(serial, kind);
}

void Control::setControlledByAnotherClient(const std::string& serial, bool held)
{
    SimWorld::instance().setControlledByAnotherClient(serial, held);
}

void Control::setOverheating(const std::string& serial, bool overheating, bool overheated)
{
    SimWorld::instance().setOverheating(serial, overheating, overheated);
}

void Control::setStepped(bool stepped)
{
    SimWorld::instance().setStepped(stepped);
}

void Control::step(int count)
{
    SimWorld::instance().step(count);
}

void Control::failTransport(const std::string& message)
{
    SimWorld::instance().failTransport(message);
}

void Control::injectException(const std::string& operation, plugin::FaultInjector::Kind kind,
                              const std::string& message, int count)
{
    plugin::FaultInjector::inject(operation, kind, message, count);
}

} // namespace Zerlane::Sim
