#include "support/Basics.h"

#include <locale>

using namespace Test;

namespace {

struct Counter : FCurveObserver {
    int changes = 0;
    void curveChanged(FCurve&) override { ++changes; }
};

struct Flag {
    const char* name;
    bool (*is)(const FCurve&);
    void (*set)(FCurve&, bool);
    const char* key;
    bool byDefault;
};

const Flag kFlags[] = {
    {"Visible", &IsVisible, &SetVisible, "fc_vis", true},
    {"Editable", &IsEditable, &SetEditable, "fc_edit", true},
    {"Locked", &IsLocked, &SetLocked, "fc_lock", false},
    {"Velocity", &IsVelocityVisible, &SetVelocityVisible, "fc_vel", false},
    {"Acceleration", &IsAccelerationVisible, &SetAccelerationVisible, "fc_acc", false},
    {"Discontinuity", &IsDiscontinuityVisible, &SetDiscontinuityVisible, "fc_disc", false},
};

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

} // namespace

TEST(DisplayProperties, FlagsStoreOnlyWhatDiffersFromANewCurve) {
    for (const Flag& flag : kFlags) {
        SCOPED_TRACE(flag.name);
        const auto curve = FCurve::create();
        Counter counter;
        curve->subscribe(counter);

        EXPECT_EQ(flag.is(*curve), flag.byDefault);
        flag.set(*curve, flag.byDefault);
        EXPECT_EQ(counter.changes, 0);

        flag.set(*curve, !flag.byDefault);
        flag.set(*curve, !flag.byDefault);
        EXPECT_EQ(counter.changes, 1);
        EXPECT_STREQ(curve->getProperty(flag.key), "1");
        EXPECT_EQ(flag.is(*curve), !flag.byDefault);

        curve->setProperty(flag.key, "0"); // any text counts
        EXPECT_EQ(flag.is(*curve), !flag.byDefault);

        flag.set(*curve, flag.byDefault);
        EXPECT_EQ(curve->sizeProperties(), 0U);
    }
}

TEST(DisplayProperties, AKeyHasALockOfItsOwn) {
    Keyframe key;
    SetLocked(key, true);
    EXPECT_STREQ(key.getProperty("fc_lock"), "1");
    SetLocked(key, false);
    EXPECT_EQ(key.sizeProperties(), 0U);
}

TEST(DisplayProperties, GridIsTextOfSixDigitsReadInSinglePrecision) {
    const auto curve = FCurve::create();
    Rectangle<double> grid(1, 2, 3, 4);
    EXPECT_FALSE(HasGridSettings(*curve));
    GetGridSettings(*curve, grid);
    EXPECT_EQ(grid, Rectangle<double>());

    const UnderLocale locale;
    SetGridSettings(*curve, {0.1, 0, 2, 2});
    EXPECT_TRUE(HasGridSettings(*curve));
    EXPECT_STREQ(curve->getProperty("fc_grid"), "0.1 0 2 2");
    GetGridSettings(*curve, grid);
    EXPECT_EQ(grid, Rectangle<double>(0.10000000149011612, 0, 2, 2));

    SetGridSettings(*curve, {-0.5, 1e7, 10.0 / 3.0, 123456});
    EXPECT_STREQ(curve->getProperty("fc_grid"), "-0.5 1e+07 3.33333 123456");
    GetGridSettings(*curve, grid);
    EXPECT_EQ(grid, Rectangle<double>(-0.5, 1e7, 3.33333F, 123456));

    SetGridSettings(*curve, {kInfinity, 0, 1, 1});
    SetGridSettings(*curve, {0, 0, 1, kInfinity});
    EXPECT_STREQ(curve->getProperty("fc_grid"), "-0.5 1e+07 3.33333 123456");

    for (const Rectangle<double>& none :
         {Rectangle<double>(1, 1, 0, 1), Rectangle<double>(1, 1, 1, -1), Rectangle<double>(1, 1, kNaN, 1)}) {
        curve->setProperty("fc_grid", "0 0 1 1");
        SetGridSettings(*curve, none);
        EXPECT_FALSE(HasGridSettings(*curve));
    }
    curve->setProperty("fc_grid", "0 0 1 1");
    RemoveGridSettings(*curve);
    EXPECT_FALSE(HasGridSettings(*curve));

    curve->setProperty("fc_grid", "7 grid 3 4");
    GetGridSettings(*curve, grid);
    EXPECT_EQ(grid, Rectangle<double>(7, 0, 0, 0));
}

TEST(DisplayProperties, TangentScaleOfOneIsNotStored) {
    const UnderLocale locale;
    const auto curve = FCurve::create();
    EXPECT_EQ(GetTangentScale(*curve), 1.0);
    SetTangentScale(*curve, 1.23456789);
    EXPECT_STREQ(curve->getProperty("fc_scal"), "1.23457");
    EXPECT_EQ(GetTangentScale(*curve), 1.23457);
    SetTangentScale(*curve, 1234567.0);
    EXPECT_STREQ(curve->getProperty("fc_scal"), "1.23457e+06");
    SetTangentScale(*curve, std::numeric_limits<double>::infinity());
    EXPECT_EQ(GetTangentScale(*curve), 1234570.0);
    SetTangentScale(*curve, 1.0);
    EXPECT_EQ(curve->sizeProperties(), 0U);
    curve->setProperty("fc_scal", "large");
    EXPECT_EQ(GetTangentScale(*curve), 0.0);
}

TEST(DisplayProperties, EditorKeysBeginWithFc) {
    const struct {
        const char* key;
        bool isEditorKey;
    } rows[] = {{"fc_sel", true}, {"fc_", true},   {"fc", false},   {"", false},
                {"xfc_a", false}, {"Fc_a", false}, {nullptr, false}};
    for (const auto& row : rows) EXPECT_EQ(IsEditorKeyString(row.key), row.isEditorKey) << (row.key ? row.key : "null");
}
