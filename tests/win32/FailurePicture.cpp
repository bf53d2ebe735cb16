// A picture of the screen at a test's first failure, while its windows still stand.
#include <algorithm>

#include <gtest/gtest.h>

#include "tests/win32/WindowFixture.h"
#include "trevolt/Utf8.h"

namespace trevolt::test {
namespace {

class CFailurePicture : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo& info) override {
        m_name = std::string("failed-") + info.test_suite_name() + "-" + info.name();
        std::replace(m_name.begin(), m_name.end(), '/', '-');
    }
    void OnTestPartResult(const testing::TestPartResult& result) override {
        if (!result.failed() || m_name.empty())
            return;
        CPixels::OfSteadyScreen(ScreenArea())
            .Save(PictureFolder() + Utf8ToWide(m_name).value() + L".png");
        m_name.clear();
    }

    std::string m_name;
};

const bool kIsListening = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new CFailurePicture);
    return true;
}();

} // namespace
} // namespace trevolt::test
