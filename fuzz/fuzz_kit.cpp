// The bytes are gestures of a host: edits in groups that nest, end and cancel, edits outside of groups, undo and redo.
// See tests/support/Gestures.h.

#include "Require.h"
#include "support/Gestures.h"
#include "support/ScriptBytes.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Fuzz;
    Test::ScriptBytes bytes(data, size);
    std::vector<std::shared_ptr<FCurve>> curves;
    for (int i = 0; i < 3; ++i) {
        curves.push_back(FCurve::create());
        for (int keys = bytes.below(6); keys > 0; --keys)
            curves.back()->insertSegment(*Keyframe::create(bytes.below(24), bytes.below(9)),
                                         InterpolatorFactory::create("bezier()"));
    }
    Test::GestureHost host(bytes, curves);
    for (int i = 0; i < 24 && !bytes.ended(); ++i) RequireNone(host.run(), "gestures are undone");
    RequireNone(host.runBack(), "all gestures are undone and redone");
    return 0;
}
