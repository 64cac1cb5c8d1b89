// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "log_capture.h"
#include "request_time_out.h"
#include "wall_clock.h"

namespace {
using testing::ElementsAre;

class RequestTimeOutTest : public testing::Test {
protected:
    RequestTimeOutTest()
    {
        Nubis::WallClock::SetSource([this]() { return nowSeconds_ * 1000; });
    }
    ~RequestTimeOutTest() override
    {
        Nubis::WallClock::SetSource(nullptr);
    }

    std::atomic<int64_t> nowSeconds_{1000};
    Nubis::RequestTimeOut requests_;
};

TEST_F(RequestTimeOutTest, EachLateRequestIsLoggedOnceAndTheFirstHidesThoseBehindIt)
{
    NubisTest::LogCapture log;
    requests_.AddRequest("", 1);
    requests_.AddRequest("b", 10);
    requests_.AddRequest("a", 10);
    nowSeconds_ = 1010;
    EXPECT_FALSE(requests_.HasRequestTimeOut());
    nowSeconds_ = 1011;
    EXPECT_TRUE(requests_.HasRequestTimeOut());
    EXPECT_TRUE(requests_.HasRequestTimeOut());
    EXPECT_THAT(log.TakeErrors(), ElementsAre("request id:a is timeout, timeout:10"));
    requests_.RemoveRequest("a");
    EXPECT_TRUE(requests_.HasRequestTimeOut());
    EXPECT_THAT(log.TakeErrors(), ElementsAre("request id:b is timeout, timeout:10"));
    // Added anew it has its whole time, and is logged again.
    requests_.AddRequest("b", 10);
    EXPECT_FALSE(requests_.HasRequestTimeOut());
    nowSeconds_ = 1022;
    EXPECT_TRUE(requests_.HasRequestTimeOut());
    EXPECT_THAT(log.TakeErrors(), ElementsAre("request id:b is timeout, timeout:10"));
    requests_.Clear();
    EXPECT_FALSE(requests_.HasRequestTimeOut());
}
} // namespace
