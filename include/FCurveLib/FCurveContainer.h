#pragma once

#include "FCurveLib/ContainerObserver.h"
#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/ProjectionIterator.h"
#include "FCurveLib/SharedFromThis.h"
#include "FCurveLib/detail/ObserverSet.h"
#include "FCurveLib/detail/PropertyCarrier.h"

#include <cstddef>
#include <list>
#include <memory>
#include <unordered_map>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// An ordered collection of curves, such as those shown together in an editor or read from one file, with properties of
/// its own. It holds each curve object at most once. Made by create.
///
/// Any number of threads may call the const members of a container that nobody edits.
class FCURVELIB_API FCurveContainer : public SharedFromThis<FCurveContainer>,
                                      public Private::PropertyCarrier<FCurveContainer> {
    using List = std::list<std::shared_ptr<FCurve>>;

public:
    /// \name Make
    /// @{

    /// Without curves and properties.
    static std::shared_ptr<FCurveContainer> create();
    ~FCurveContainer();
    /// @}

    /// \name Curves
    /// Iterators walk the curves in list order and yield FCurve&; they stay valid until their curve is removed.
    /// @{
    struct Projection {
        FCurve& operator()(const std::shared_ptr<FCurve>& curve) const noexcept { return *curve; }
    };
    struct ConstProjection {
        const FCurve& operator()(const std::shared_ptr<FCurve>& curve) const noexcept { return *curve; }
    };
    using iterator = ProjectionIterator<Projection, List::iterator>;
    using const_iterator = ProjectionIterator<ConstProjection, List::const_iterator>;

    std::size_t size() const noexcept { return m_curves.size(); }
    bool empty() const noexcept { return m_curves.empty(); }
    iterator begin() noexcept { return iterator(m_curves.begin()); }
    iterator end() noexcept { return iterator(m_curves.end()); }
    const_iterator begin() const noexcept { return const_iterator(m_curves.begin()); }
    const_iterator end() const noexcept { return const_iterator(m_curves.end()); }

    /// Inserts before the position and returns the new element. A curve that is here already is neither inserted nor
    /// moved: the result is its element and nobody is told. A null pointer is refused the same way, with end().
    /// Constant time.
    iterator insertCurve(iterator position, std::shared_ptr<FCurve> curve);
    /// As insertCurve, at the end.
    iterator addCurve(std::shared_ptr<FCurve> curve);
    /// Removes the curve and returns the position after it. Precondition: a position of this container other than
    /// end().
    iterator removeCurve(iterator position);
    /// Whether this very curve is here. Constant time.
    bool contains(const FCurve& curve) const noexcept { return m_positions.count(&curve) != 0; }
    /// Moves a curve of this container before the position, which may be its own. Its iterators stay valid, and the
    /// observers are told if the order changed. Returns the curve's element; end() for a curve that is not here.
    /// Constant time.
    iterator moveCurve(iterator position, FCurve& curve);
    /// The same for a curve of another container: iterators to it go along, and the observers of both are told. Nothing
    /// happens, and the result is end(), where it is not in the other one; a curve that is here already stays in both.
    iterator moveCurve(iterator position, FCurveContainer& from, FCurve& curve);
    /// Removes all curves; properties stay. Tells the observers also when there was none.
    void clear();
    /// @}

    /// \name Properties
    /// As PropertyMap; getProperty, sizeProperties, beginProperties and endProperties read them. A change is told to
    /// the observers, clearing once.
    /// @{
    bool setProperty(const char* key, const char* value);
    void clearProperties();
    /// @}

    /// \name Observe
    /// Observers are called in the order of subscription, under the rules of FCurve's.
    /// @{
    void subscribe(ContainerObserver& observer);
    void unsubscribe(ContainerObserver& observer) noexcept;
    /// Sends containerChanged.
    void notifyChanged();

    /// Turns notification off while it lives, as FCurve::Switch does: of one container, or of the whole library.
    class FCURVELIB_API Switch : public Private::NotificationSwitch {
    public:
        Switch() noexcept;
        explicit Switch(FCurveContainer& container) noexcept;
    };
    /// @}

private:
    friend struct Private::Raw;
    friend struct Private::Read;
    friend class Private::PropertyCarrier<FCurveContainer>;

    const PropertyMap& storedProperties() const noexcept { return m_properties; }

    FCurveContainer() noexcept;
    FCurveContainer(const FCurveContainer&) = delete;
    FCurveContainer& operator=(const FCurveContainer&) = delete;

    iterator find(const FCurve* curve) noexcept;
    void replaceCurves(std::size_t first, std::size_t count, const std::vector<std::shared_ptr<FCurve>>& curves);

    List m_curves;
    std::unordered_map<const FCurve*, List::iterator> m_positions;
    PropertyMap m_properties;
    Private::ObserverSet<ContainerObserver> m_observers;
    std::unique_ptr<Private::Recorder> m_recorder; // null until somebody groups or undoes edits; dies before the curves
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
