// The bytes are what a host does to four curves, their container and a selection: see tests/support/Host.h.

#include "Require.h"
#include "support/Host.h"
#include "support/ScriptBytes.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Test::ScriptBytes bytes(data, size);
    Fuzz::RequireNone(Test::Host(bytes, !Fuzz::OneInSixteen(data, size)).run(64), "the models agree");
    return 0;
}
