// What a message without anything in it looks like.
#pragma once

#include <gtest/gtest.h>

#include "AppControl.h"

inline void expectEmpty(const Util::AppControlData& data)
{
    EXPECT_EQ(data.getPackageName(), "");
    EXPECT_EQ(data.getOperation(), "");
    EXPECT_EQ(data.getUri(), "");
    EXPECT_EQ(data.getReplyCallback(), nullptr);
    EXPECT_EQ(data.getReplyCallbackUserData(), nullptr);
    EXPECT_EQ(data.getRequestedAppControl(), nullptr);
    EXPECT_EQ(static_cast<int>(data.getResultCode()), 1);
    EXPECT_TRUE(data.getExtraDataMap().empty());
    EXPECT_TRUE(data.getExtraVectorDataMap().empty());
}
