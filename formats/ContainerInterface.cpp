#include "FCurveLib/ContainerInterface.h"

#include "FCurveLib/FCurveContainer.h"

#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

ContainerInterface::ContainerInterface(FCurveContainer& container) : m_container(&container) {}
ContainerInterface::~ContainerInterface() = default;

void ContainerInterface::containerProperty(const char* key, const char* value) {
    m_container->setProperty(key, value);
}

bool ContainerInterface::startCurve(const char* name) {
    m_building = FCurve::create();
    m_silence.emplace(*m_building);
    setCurve(m_building);
    return FCurveFormatInterface::startCurve(name);
}

bool ContainerInterface::finishCurve() {
    FCurveFormatInterface::finishCurve();
    m_silence.reset();
    if (m_building) m_container->addCurve(std::move(m_building));
    m_building.reset();
    return true;
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
