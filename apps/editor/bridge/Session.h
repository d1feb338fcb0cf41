#pragma once

#include <FCurveLib/CurveOverview.h>
#include <FCurveLib/CurveView.h>
#include <FCurveLib/EditGroup.h>
#include <FCurveLib/EditObserver.h>
#include <FCurveLib/FCurve.h>
#include <FCurveLib/FCurveContainer.h>
#include <FCurveLib/HitRecord.h>
#include <FCurveLib/KeyGroup.h>
#include <FCurveLib/Keyframe.h>
#include <FCurveLib/MoveKeys.h>
#include <FCurveLib/Selection.h>
#include <FCurveLib/SelectionExaminer.h>
#include <FCurveLib/Tangent.h>
#include <FCurveLib/UndoStack.h>
#include <FCurveLib/ViewLine.h>
#include <nlohmann/json.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace editor {

using namespace VEM_FN::FCurveLib;
using Json = nlohmann::json;

/// What the user asked for cannot be done; the message is shown to people.
struct Refusal : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The curves to draw and how, as a flat list of numbers: Session::draw.
enum DrawnKeyFlag : std::uint32_t { KeySelected = 1, KeyBreakdown = 2, KeyLocked = 4 };

/// One open document with everything that the page does with it. The page calls commands by name with arguments in
/// JSON; what is needed for each picture goes in plain numbers. Knows nothing of browsers.
class Session : private EditObserver {
public:
    Session();
    ~Session() override;

    /// \name Commands
    /// @{

    /// The result as JSON; {"error": "..."} where the command is not known, its arguments are wrong, or the document
    /// refuses. An edit that fails leaves nothing behind.
    std::string call(const std::string& command, const std::string& arguments);
    /// The bytes that the next "open" reads.
    void setInput(std::string bytes) { m_input = std::move(bytes); }
    /// The bytes that "save" made.
    const std::string& output() const noexcept { return m_output; }
    /// @}

    /// \name For each picture
    /// @{

    /// What the window shows. With separate scales, values from 0 to 1 stand for each curve's own range.
    void setView(const CurveView& view) { m_view = view; }

    /// For each visible curve that has something to show: its number, 1 if it is a preview and not the curve itself,
    /// 1 if something of it is selected, and a number that differs whenever what follows may; then strokes: their
    /// number, and of each place, number of points and x, y of the points, in pixels; jumps: their number, and of each
    /// x, from, to; keys: their number, and of each x, y, flags; handles: their number, and of each the key's x, y, the
    /// tip's x, y and 1 if it is selected. Valid until the next call.
    const std::vector<double>& draw(const CurveView& view, ViewPolyline::Quantity quantity);
    /// Of each curve.
    const std::vector<double>& valuesAt(double frame);
    const std::vector<double>& numbers() const noexcept { return m_numbers; } ///< of the last of these two
    /// Rises with each edit, selections included.
    std::uint32_t revision() const noexcept { return m_revision; }
    /// @}

private:
    using Command = Json (Session::*)(const Json&);
    static const std::unordered_map<std::string, Command>& commands();

    struct Grip {
        std::shared_ptr<Tangent> handle;
        Vector2D<double> away; // of its tip from the pointer, on the scale of its curve
    };

    // A drag: from the button's going down to its going up.
    struct Drag {
        enum What : std::uint8_t { Keys, Handle, Scale };
        What what = Keys;
        std::unique_ptr<EditGroup> group;
        KeyGroup keys;
        MoveOptions options;
        std::vector<Grip> grips;       // those held by the way before the one under the pointer
        std::shared_ptr<FCurve> curve; // whose scale the pixels have
        Vector2D<double> start;        // where the pointer was
        Vector2D<double> pivot;        // of scaling
    };

    // What draw made of a curve, good until the curve, its selection, or the view changes.
    struct Drawn {
        CurveView view;
        double stamp = 0.0; // 0: nothing yet
        std::vector<double> numbers;
    };

    struct Frame { // of a curve's own scale
        double low = 0.0;
        double high = 1.0;
    };

    void editStepped(const EditSummary& edit) override;
    void editEnded(const EditSummary& edit) override;

    /// \name Session.cpp
    /// @{
    FCurve& curveAt(const Json& arguments, const char* name = "curve") const;
    int indexOf(const FCurve& curve) const;
    FCurve* activeCurve() const;
    CurveView viewOf(const FCurve& curve, const CurveView& view) const;
    CurveOverview& overviewOf(const FCurve& curve);
    double valueUnit() const;
    void forgetScales() { m_scales.clear(); }
    const std::vector<HitRecord>& selected();
    std::vector<std::shared_ptr<Keyframe>> selectedKeys();
    std::vector<std::shared_ptr<Keyframe>> editableKeys();
    std::vector<std::shared_ptr<Tangent>> editableHandles();
    std::vector<std::shared_ptr<FCurve>> targetCurves();
    Refusal refusal(const char* otherwise);
    void clearSelection();
    void drawCurve(const FCurve& curve, int index, bool isPreview, const CurveView& view,
                   ViewPolyline::Quantity quantity);
    void drawLine(const ViewPolyline& line);
    void drawParts(const FCurve& curve, const CurveView& view);
    void dropPreview() { m_preview.clear(); }
    Json state(const Json&);
    Json setOptions(const Json&);
    Json frame(const Json&);
    Json axis(const Json&);
    Json velocityRange(const Json&);
    bool marksVelocity() const;
    /// @}

    /// \name SelectCommands.cpp
    /// @{
    HitRecord pickAt(double x, double y, double radius, bool wantsSegments) const;
    Json pick(const Json&);
    Json marquee(const Json&);
    Json selectAll(const Json&);
    Json selectNone(const Json&);
    Json selectCurve(const Json&);
    Json selectKey(const Json&);
    Json stepKey(const Json&);
    Json selectHandles(const Json&);
    Json selectSegments(const Json&);
    /// @}

    /// \name EditCommands.cpp
    /// @{
    void pullHandle(Tangent& handle, const Vector2D<double>& tip) const;
    Json dragBegin(const Json&);
    Json dragTo(const Json&);
    Json dragEnd(const Json&);
    Json dragCancel(const Json&);
    Json nudge(const Json&);
    Json scale(const Json&);
    Json stretch(const Json&);
    Json addKey(const Json&);
    Json removeKeys(const Json&);
    Json tangentType(const Json&);
    Json tangentFlag(const Json&);
    Json keyFlag(const Json&);
    Json interpolator(const Json&);
    Json checkFormula(const Json&);
    Json copy(const Json&);
    Json cut(const Json&);
    Json paste(const Json&);
    Json undo(const Json&);
    Json redo(const Json&);
    /// @}

    /// \name PanelCommands.cpp
    /// @{
    Json addCurve(const Json&);
    Json removeCurve(const Json&);
    Json moveCurve(const Json&);
    Json setCurve(const Json&);
    Json properties(const Json&);
    Json setProperty(const Json&);
    Json rows(const Json&);
    Json setRow(const Json&);
    /// @}

    /// \name ToolCommands.cpp
    /// @{
    Json preview(const Json&);
    Json apply(const Json&);
    Json endPreview(const Json&);
    /// @}

    /// \name FileCommands.cpp
    /// @{
    Json formats(const Json&);
    Json open(const Json&);
    Json save(const Json&);
    Json saved(const Json&);
    Json fill(const Json&);
    /// @}

    std::shared_ptr<FCurveContainer> m_curves;
    Selection m_selection;
    UndoStack m_undo;
    SelectionExaminer m_examiner;
    CurveView m_view;
    bool m_isSeparate = false;
    std::weak_ptr<FCurve> m_active;
    std::optional<Drag> m_drag;
    std::unordered_map<const FCurve*, std::unique_ptr<CurveOverview>> m_overviews;
    std::unordered_map<const FCurve*, std::array<Drawn, 2>> m_drawn; // by quantity
    double m_stamp = 0.0;
    mutable std::unordered_map<const FCurve*, Frame> m_scales;
    std::vector<std::pair<int, std::shared_ptr<FCurve>>> m_preview; // the curve's number, and what would become of it
    std::vector<HitRecord> m_selected;
    std::unordered_set<const FCurve*> m_selectedCurves; // of which anything is selected
    bool m_isSelectedStale = true;
    std::uint32_t m_revision = 0;
    bool m_isEdited = false; // by the present command, in more than what is selected
    std::string m_input;
    std::string m_output;
    std::vector<double> m_numbers;
    ViewPolyline m_line;
};

/// Whether an edit may touch the key: neither it nor its curve is locked.
bool IsEditableKey(const Keyframe& key);
bool IsLockedKey(const Keyframe& key);
/// {"others": "stop" | "cross" | "ripple", "frameStep", "valueStep"}
MoveOptions MoveOptionsOf(const Json& arguments);
/// Throws Refusal where something held keys back that were to go to a place that was typed.
void CheckArrived(bool isThere, const MoveOptions& options);
/// Throws Refusal where that key cannot stand there: nobody who types 40 wants 30.999.
void TakeToFrame(Keyframe& key, double frame, const MoveOptions& options);
/// What people call it; "linear" stands for "linear()". Throws Refusal for what nobody understands, so that the old one
/// stays.
std::shared_ptr<Interpolator> InterpolatorOf(const std::string& text);
/// Throws Refusal for other names.
std::uint8_t TangentTypeOf(const std::string& name);
/// A segment between keys whose kind has no tangents becomes bezier(), as otherwise nothing would be seen.
void SetTangentType(Tangent& tangent, std::uint8_t type);
/// The argument, or the fallback where it is absent. Throws Json's exceptions for another type.
template<class T>
T Get(const Json& arguments, const char* name, T fallback) {
    const auto found = arguments.find(name);
    return found == arguments.end() ? fallback : found->get<T>();
}
/// A finite number.
double GetNumber(const Json& arguments, const char* name);
/// Bytes that are no UTF-8 become U+FFFD, so that JSON takes the text.
std::string ToUtf8(const char* text);

} // namespace editor
