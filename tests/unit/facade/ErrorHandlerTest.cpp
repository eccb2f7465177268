// The last error of a backend comes from the service's error body: its
// "message", or nothing when the body says nothing usable.
#include <gtest/gtest.h>

#include "FacadeTestBackends.h"
#include "facade/OracleCloudErrorHandler.h"
#include "parser/OracleCloudParser.h"

using namespace facadetest;

TEST(ErrorHandler, MessageOfTheBodyBecomesTheLastError) {
    COracleCloudParser parser;
    COracleCloudErrorHandler handler(&parser);
    EXPECT_EQ(handler.GetLastError(), "");
    handler.SetLastErrorFromResponse(R"({"code":"NotAuthorizedOrNotFound","message":"Authorization failed"})");
    EXPECT_EQ(handler.GetLastError(), "Authorization failed");
}

TEST(ErrorHandler, EmptyBodyKeepsThePreviousText) {
    COracleCloudParser parser;
    COracleCloudErrorHandler handler(&parser);
    handler.SetLastError("connection reset");
    handler.SetLastErrorFromResponse("");
    EXPECT_EQ(handler.GetLastError(), "connection reset");
}

TEST(ErrorHandler, BodyWithoutMessageClearsTheText) {
    COracleCloudParser parser;
    COracleCloudErrorHandler handler(&parser);
    handler.SetLastError("older");
    handler.SetLastErrorFromResponse(R"({"code":"LimitExceeded"})");
    EXPECT_EQ(handler.GetLastError(), "");
}

TEST(ErrorHandler, BodyThatIsNotJsonClearsTheTextAndIsLogged) {
    COracleCloudParser parser;
    COracleCloudErrorHandler handler(&parser);
    handler.SetLastError("older");
    LogCapture log;
    handler.SetLastErrorFromResponse("<html>502 Bad Gateway</html>");
    EXPECT_EQ(handler.GetLastError(), "");
    ASSERT_EQ(log.errors.size(), 1u);
    EXPECT_EQ(log.errors[0].rfind("Exception parsing json object - ", 0), 0u) << log.errors[0];
}

TEST(ErrorHandler, WithoutAParserAnyBodyClearsTheText) {
    COracleCloudErrorHandler handler(nullptr);
    handler.SetLastError("older");
    handler.SetLastErrorFromResponse(R"({"message":"unreadable without a parser"})");
    EXPECT_EQ(handler.GetLastError(), "");
}
