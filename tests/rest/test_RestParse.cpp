#include "rest/RestJson.h"
#include "rest/RestParse.h"
#include "support/TempConfig.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <gtest/gtest.h>

namespace {
QJsonObject Json(const char *text)
{
  return QJsonDocument::fromJson(text).object();
}
} // namespace

TEST(ParseHelpers, AbsentOrMistypedMembersLeaveThePreset)
{
  const QJsonObject object = Json(R"({"n":42,"f":1.5,"s":"text","b":true,"nul":null,"big":3000000000})");
  std::int32_t number = 7;
  ParseInteger(object, "n", number);
  EXPECT_EQ(number, 42);
  for (const char *key : {"missing", "s", "nul", "f", "big"}) {
    number = 7;
    ParseInteger(object, key, number);
    EXPECT_EQ(number, -1) << key;
  }
  bool flag = true;
  ParseBoolean(object, "n", flag);
  EXPECT_FALSE(flag);
  ParseBoolean(object, "b", flag);
  EXPECT_TRUE(flag);
  QString text = "old";
  ParseString(object, "n", text);
  EXPECT_TRUE(text.isEmpty());
  ParseString(object, "s", text);
  EXPECT_EQ(text, "text");
}

TEST(ParseHelpers, SubRecordsAreEmptiedFirstThenFilledFromAnObject)
{
  const QJsonObject object =
      Json(R"({"team":{"id":3,"name":"Desk"},"none":null,"sla":{"id":4,"description":"48 h"},"p":{"reference":"P1"}})");
  tyRestSubName name{9, "old"};
  ParseSubName(object, "none", name);
  EXPECT_EQ(std::tie(name.id, name.name), std::make_tuple(0, QString()));
  ParseSubName(object, "team", name);
  EXPECT_EQ(std::tie(name.id, name.name), std::make_tuple(3, QString("Desk")));
  tyRestSubDescription description{9, "old"};
  ParseSubDesc(object, "sla", description);
  EXPECT_EQ(std::tie(description.id, description.description), std::make_tuple(4, QString("48 h")));
  tyRestSubReference reference{9, "old"};
  ParseSubRef(object, "p", reference);
  // An absent id inside a sub-object is 0, not -1.
  EXPECT_EQ(std::tie(reference.id, reference.reference), std::make_tuple(0, QString("P1")));
}

TEST(AsciiJson, CharactersOutsideAsciiBecomeEscapes)
{
  const QJsonObject object{{"a", QString::fromUtf8("é\x7f\t😀\n\x01\\\"")}};
  EXPECT_EQ(AsciiJson(object), "{\"a\":\"\\u00e9\x7f\\u0009\\ud83d\\ude00\\u000a\\u0001\\\\\\\"\"}");
  EXPECT_EQ(QJsonDocument::fromJson(AsciiJson(object)).object(), object);
}
