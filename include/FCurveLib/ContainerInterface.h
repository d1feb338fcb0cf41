#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/FCurve.h"
#include "FCurveLib/FCurveFormatInterface.h"
#include "FCurveLib/Forward.h"

#include <memory>
#include <optional>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Builds curves from the calls of a FormatInterface and adds each one to a container as it finishes, so that those
/// before an error stay. A curve is built silently: its observers (global ones, as nobody else knows it yet) hear
/// nothing of it, those of the container hear that it was added.
class FCURVELIB_API ContainerInterface : public FCurveFormatInterface {
public:
    /// The container must outlive this object.
    explicit ContainerInterface(FCurveContainer& container);
    ~ContainerInterface() override;

    void containerProperty(const char* key, const char* value) override;
    bool startCurve(const char* name) override;
    bool finishCurve() override;

private:
    FCurveContainer* m_container;
    std::shared_ptr<FCurve> m_building;
    std::optional<FCurve::Switch> m_silence;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
