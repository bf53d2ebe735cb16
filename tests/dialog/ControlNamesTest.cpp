// Names of controls for a screen reader.
#include "app/dialog/ControlNames.h"

#include <gtest/gtest.h>

namespace trevolt {
namespace {

TEST(WithoutAccessKey, DropsTheMarkAndKeepsTheLetter) {
    EXPECT_EQ(WithoutAccessKey(L"Sta&rt"), L"Start");
    EXPECT_EQ(WithoutAccessKey(L"&Start"), L"Start");
    EXPECT_EQ(WithoutAccessKey(L"Start"), L"Start");
    EXPECT_EQ(WithoutAccessKey(L"cut && &paste"), L"cut & paste");
    EXPECT_EQ(WithoutAccessKey(L"a&"), L"a");
    EXPECT_EQ(WithoutAccessKey(L""), L"");
}

TEST(WithoutAccessKey, DropsAKeyInBrackets) {
    EXPECT_EQ(WithoutAccessKey(L"\u958B\u59CB(&R)"), L"\u958B\u59CB");
    EXPECT_EQ(WithoutAccessKey(L"\u53C2\u7167(&P)..."), L"\u53C2\u7167...");
    EXPECT_EQ(WithoutAccessKey(L"\u0E40\u0E23\u0E34\u0E48\u0E21 (&R)"),
              L"\u0E40\u0E23\u0E34\u0E48\u0E21");
    EXPECT_EQ(WithoutAccessKey(L"(&R)"), L"");
    EXPECT_EQ(WithoutAccessKey(L"a (&R"), L"a (R");
    EXPECT_EQ(WithoutAccessKey(L"a (&Re)"), L"a (Re)");
}

TEST(ButtonName, BeginsWithTheButtonsText) {
    EXPECT_EQ(ButtonName(L"Select &Path...", L"Coefficients &before Rotation"),
              L"Select Path..., Coefficients before Rotation");
}

} // namespace
} // namespace trevolt
