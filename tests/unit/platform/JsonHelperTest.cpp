#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "platform/JsonHelper.h"

using namespace OracleCloudSDKWrapper;

namespace {

JsonObject Doc() {
    JsonValue v;
    EXPECT_TRUE(JsonHelper::Parse(R"({
        "s": "text", "i": -12, "big": 18446744073709551615, "r": -2.9, "rpos": 7.99,
        "t": true, "f": false, "n": null, "o": {"k": 1}, "a": [1, 2], "si": "12"
    })",
                                  v));
    return v.as_object();
}

TEST(JsonHelper, ParseRejectsTextThatIsNotOneJsonDocument) {
    JsonValue v = JsonObject{{"keep", 1}};
    for (const char* bad : {"", "   ", "{", "{\"a\":}", "[1,]", "{} {}", "{'a':1}", "nul", "{\"a\":1} x"}) {
        SCOPED_TRACE(bad);
        EXPECT_FALSE(JsonHelper::Parse(bad, v));
    }
    EXPECT_TRUE(v.is_object() && v.as_object().contains("keep")) << "a failed parse leaves the output alone";
    EXPECT_TRUE(JsonHelper::Parse(" [1, \"x\"] \n", v));
    EXPECT_TRUE(v.is_array());
}

TEST(JsonHelper, ParseSurvivesDeepNestingWithoutThrowing) {
    std::string deep(100000, '[');
    JsonValue v;
    EXPECT_FALSE(JsonHelper::Parse(deep, v));
}

TEST(JsonHelper, GettersGiveValuesOfTheirKind) {
    JsonObject o = Doc();
    EXPECT_EQ(JsonHelper::GetStringValue(o, "s"), "text");
    EXPECT_EQ(JsonHelper::GetIntValue(o, "i"), -12);
    EXPECT_EQ(JsonHelper::GetUInt64Value(o, "big"), std::numeric_limits<uint64_t>::max());
    EXPECT_EQ(JsonHelper::GetIntValue(o, "big"), std::numeric_limits<int64_t>::max()) << "saturated";
    EXPECT_TRUE(JsonHelper::GetBoolValue(o, "t"));
    EXPECT_DOUBLE_EQ(JsonHelper::GetFloatValue(o, "r"), -2.9);
    EXPECT_DOUBLE_EQ(JsonHelper::GetFloatValue(o, "i"), -12.0);
    ASSERT_NE(JsonHelper::FindObjectValue(o, "o"), nullptr);
    EXPECT_EQ(JsonHelper::GetIntValue(*JsonHelper::FindObjectValue(o, "o"), "k"), 1);
    ASSERT_NE(JsonHelper::FindArrayValue(o, "a"), nullptr);
    EXPECT_EQ(JsonHelper::FindArrayValue(o, "a")->size(), 2u);
}

TEST(JsonHelper, RealsAreTruncatedTowardZero) {
    JsonObject o = Doc();
    EXPECT_EQ(JsonHelper::GetIntValue(o, "r"), -2);
    EXPECT_EQ(JsonHelper::GetIntValue(o, "rpos"), 7);
    EXPECT_EQ(JsonHelper::GetUInt64Value(o, "rpos"), 7u);
    EXPECT_EQ(JsonHelper::GetUInt64Value(o, "r"), 0u) << "a negative number is no unsigned value";
    EXPECT_EQ(JsonHelper::GetUInt64Value(o, "i"), 0u);
}

TEST(JsonHelper, WrongKindsAndAbsentKeysGiveEmptyValues) {
    JsonObject o = Doc();
    for (const char* key : {"i", "t", "n", "o", "a", "absent"}) {
        SCOPED_TRACE(key);
        EXPECT_EQ(JsonHelper::GetStringValue(o, key), "");
    }
    for (const char* key : {"s", "si", "t", "n", "o", "a", "absent"}) {
        SCOPED_TRACE(key);
        EXPECT_EQ(JsonHelper::GetIntValue(o, key), 0);
        EXPECT_EQ(JsonHelper::GetUInt64Value(o, key), 0u);
        EXPECT_EQ(JsonHelper::GetFloatValue(o, key), 0.0);
    }
    for (const char* key : {"s", "i", "f", "n", "absent"}) EXPECT_FALSE(JsonHelper::GetBoolValue(o, key)) << key;
    EXPECT_EQ(JsonHelper::FindObjectValue(o, "a"), nullptr);
    EXPECT_EQ(JsonHelper::FindObjectValue(o, "absent"), nullptr);
    EXPECT_EQ(JsonHelper::FindArrayValue(o, "o"), nullptr);
    EXPECT_EQ(JsonHelper::FindArrayValue(o, "n"), nullptr);
}

TEST(JsonHelper, SerializeRoundTripsEscapes) {
    JsonObject o{{"q", "a\"b\\c\n\xc3\xbc"}, {"n", 1}};
    std::string text = JsonHelper::Serialize(o);
    JsonValue back;
    ASSERT_TRUE(JsonHelper::Parse(text, back));
    EXPECT_EQ(JsonHelper::GetStringValue(back.as_object(), "q"), "a\"b\\c\n\xc3\xbc");
    EXPECT_EQ(JsonHelper::Serialize(JsonValue(o)), text);
}

}  // namespace
