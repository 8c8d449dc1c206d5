#include "rest/RestJson.h"
#include "rest/RestParse.h"

#include <QJsonDocument>
#include <gtest/gtest.h>

// As the reference queries read members: a whole number -1 when absent or not one
// of 32 bits, a text empty when not a text, a sub-record emptied first and with
// id 0 (not -1) when its own id is absent.
TEST(ParseHelpers, AbsentOrMistypedMembersGiveTheirMarker)
{
  const QJsonObject object = QJsonDocument::fromJson(R"({"n":42,"f":1.5,"s":"text","nul":null,"big":3000000000,)"
                                                     R"("team":{"id":3,"name":"Desk"},"lead":{"name":"Ann"}})")
                                 .object();
  std::int32_t number = 7;
  ParseInteger(object, "n", number);
  EXPECT_EQ(number, 42);
  for (const char *key : {"missing", "s", "nul", "f", "big"}) {
    number = 7;
    ParseInteger(object, key, number);
    EXPECT_EQ(number, -1) << key;
  }
  QString text = "old";
  ParseString(object, "n", text);
  EXPECT_TRUE(text.isEmpty());
  ParseString(object, "s", text);
  EXPECT_EQ(text, "text");
  tyRestSubName name{9, "old"};
  ParseSubName(object, "nul", name);
  EXPECT_EQ(std::tie(name.id, name.name), std::make_tuple(0, QString()));
  ParseSubName(object, "team", name);
  EXPECT_EQ(std::tie(name.id, name.name), std::make_tuple(3, QString("Desk")));
  ParseSubName(object, "lead", name);
  EXPECT_EQ(std::tie(name.id, name.name), std::make_tuple(0, QString("Ann")));
}

TEST(AsciiJson, CharactersOutsideAsciiBecomeEscapes)
{
  const QJsonObject object{{"a", QString::fromUtf8("é\x7f\t😀\n\x01\\\"")}};
  EXPECT_EQ(AsciiJson(object), "{\"a\":\"\\u00e9\x7f\\u0009\\ud83d\\ude00\\u000a\\u0001\\\\\\\"\"}");
  EXPECT_EQ(QJsonDocument::fromJson(AsciiJson(object)).object(), object);
}
