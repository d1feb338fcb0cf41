#pragma once

#include "FCurveLib/TrackedObserver.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Hears when a container's list of curves or its properties change (FCurveContainer::subscribe). Changes inside a
/// curve go to the curve's own observers. The rules of delivery are those of FCurveObserver.
class FCURVELIB_API ContainerObserver : public TrackedObserver {
public:
    ContainerObserver() noexcept;
    ContainerObserver(const ContainerObserver&) noexcept;
    ContainerObserver& operator=(const ContainerObserver&) noexcept;
    ~ContainerObserver() override;

    virtual void containerChanged(FCurveContainer& container);
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
