#include "support/Basics.h"
#include "support/Recorder.h"

#include <locale>

using namespace Test;

namespace {

// A locale that writes 1.5 as "1,5" and 1000000 as "1.000.000".
struct Continental : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};
struct UnderLocale {
    std::locale before = std::locale::global(std::locale(std::locale::classic(), new Continental));
    ~UnderLocale() { std::locale::global(before); }
};

TEST(DisplayProperties, FlagsStoreOnlyWhatDiffersFromANewCurve) {
    const struct {
        const char* key;
        bool (*is)(const FCurve&);
        void (*set)(FCurve&, bool);
        bool byDefault;
    } flags[] = {
        {"fc_vis", &IsVisible, &SetVisible, true},
        {"fc_edit", &IsEditable, &SetEditable, true},
        {"fc_lock", &IsLocked, &SetLocked, false},
        {"fc_vel", &IsVelocityVisible, &SetVelocityVisible, false},
        {"fc_acc", &IsAccelerationVisible, &SetAccelerationVisible, false},
        {"fc_disc", &IsDiscontinuityVisible, &SetDiscontinuityVisible, false},
    };
    for (const auto& flag : flags) {
        SCOPED_TRACE(flag.key);
        const auto curve = FCurve::create();
        Recorder recorder;
        curve->subscribe(recorder);
        for (const bool on : {flag.byDefault, !flag.byDefault, !flag.byDefault}) {
            flag.set(*curve, on);
            EXPECT_EQ(flag.is(*curve), on);
        }
        EXPECT_EQ(recorder.heard, Heard{std::string("curve ") + flag.key + "=1"});
        curve->setProperty(flag.key, "0"); // any text counts
        EXPECT_EQ(flag.is(*curve), !flag.byDefault);
        flag.set(*curve, flag.byDefault);
        EXPECT_EQ(curve->sizeProperties(), 0U);
    }
    Keyframe key; // has a lock of its own
    SetLocked(key, true);
    EXPECT_STREQ(key.getProperty("fc_lock"), "1");
    SetLocked(key, false);
    EXPECT_EQ(key.sizeProperties(), 0U);
}

TEST(DisplayProperties, GridIsTextOfSixDigitsReadInSinglePrecision) {
    const UnderLocale locale;
    using Grid = Rectangle<double>;
    const struct {
        Grid grid;
        const char* text; // over "0 0 1 1"
        Grid read;
    } rows[] = {
        {{0.1, 0, 2, 2}, "0.1 0 2 2", {0.10000000149011612, 0, 2, 2}},
        {{-0.5, 1e7, 10.0 / 3.0, 123456}, "-0.5 1e+07 3.33333 123456", {-0.5, 1e7, 3.33333F, 123456}},
        {{kInfinity, 0, 1, 1}, "0 0 1 1", {0, 0, 1, 1}},
        {{0, 0, 1, kInfinity}, "0 0 1 1", {0, 0, 1, 1}},
        {{1, 1, 0, 1}, "", {}},
        {{1, 1, 1, -1}, "", {}},
        {{1, 1, kNaN, 1}, "", {}},
    };
    const auto curve = FCurve::create();
    Grid found;
    for (const auto& row : rows) {
        curve->setProperty("fc_grid", "0 0 1 1");
        SetGridSettings(*curve, row.grid);
        EXPECT_STREQ(curve->getProperty("fc_grid"), row.text);
        EXPECT_EQ(HasGridSettings(*curve), *row.text != '\0');
        GetGridSettings(*curve, found);
        EXPECT_EQ(found, row.read) << row.text;
    }
    curve->setProperty("fc_grid", "7 grid 3 4");
    GetGridSettings(*curve, found);
    EXPECT_EQ(found, Grid(7, 0, 0, 0));
    RemoveGridSettings(*curve);
    EXPECT_FALSE(HasGridSettings(*curve));
}

} // namespace
