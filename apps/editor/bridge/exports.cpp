// What the page calls, in C: texts and bytes by address in the module's memory. One document, one thread.
#include "Session.h"

#include <emscripten.h>

namespace {

editor::Session& session() {
    static editor::Session one;
    return one;
}

std::string result; // of the last call

} // namespace

extern "C" {

EMSCRIPTEN_KEEPALIVE const char* editor_call(const char* command, const char* arguments) {
    result = session().call(command, arguments);
    return result.c_str();
}

EMSCRIPTEN_KEEPALIVE void editor_input(const char* bytes, std::size_t size) {
    session().setInput(std::string(bytes, size));
}

EMSCRIPTEN_KEEPALIVE const char* editor_output() {
    return session().output().data();
}

EMSCRIPTEN_KEEPALIVE std::size_t editor_output_size() {
    return session().output().size();
}

EMSCRIPTEN_KEEPALIVE void editor_view(double left, double right, double bottom, double top, double width,
                                      double height) {
    session().setView({left, right, bottom, top, width, height});
}

EMSCRIPTEN_KEEPALIVE const double* editor_draw(double left, double right, double bottom, double top, double width,
                                               double height, int quantity) {
    using editor::ViewPolyline;
    return session()
        .draw({left, right, bottom, top, width, height}, static_cast<ViewPolyline::Quantity>(quantity))
        .data();
}

EMSCRIPTEN_KEEPALIVE std::size_t editor_draw_size() {
    return session().numbers().size();
}

EMSCRIPTEN_KEEPALIVE const double* editor_values(double frame) {
    return session().valuesAt(frame).data();
}

EMSCRIPTEN_KEEPALIVE unsigned editor_revision() {
    return session().revision();
}

} // extern "C"
