#include "RestParse.h"

#include <QJsonArray>
#include <QJsonValue>
#include <QVariant>
#include <cmath>
#include <limits>

bool ReadBoolean(const QJsonValue &member, bool &value)
{
  if (!member.isBool())
    return false;
  value = member.toBool();
  return true;
}

bool ReadInteger(const QJsonValue &member, std::int32_t &value)
{
  if (!member.isDouble())
    return false;
  const double number = member.toDouble();
  if (number != std::trunc(number) || number < std::numeric_limits<std::int32_t>::min() ||
      number > std::numeric_limits<std::int32_t>::max())
    return false;
  value = static_cast<std::int32_t>(number);
  return true;
}

bool ReadInteger(const QJsonValue &member, std::int64_t &value)
{
  if (!member.isDouble())
    return false;
  // Qt keeps a whole number of the text as a 64-bit integer, exactly.
  const QVariant number = member.toVariant();
  if (number.typeId() == QMetaType::LongLong) {
    value = number.toLongLong();
    return true;
  }
  const double whole = number.toDouble();
  if (whole != std::trunc(whole) || std::abs(whole) >= 9.0e18)
    return false;
  value = static_cast<std::int64_t>(whole);
  return true;
}

bool ReadString(const QJsonValue &member, QString &value)
{
  if (!member.isString())
    return false;
  value = member.toString();
  return true;
}

bool ReadBoolean(const QJsonObject &object, const QString &key, bool &value)
{
  return ReadBoolean(object.value(key), value);
}

bool ReadInteger(const QJsonObject &object, const QString &key, std::int32_t &value)
{
  return ReadInteger(object.value(key), value);
}

bool ReadInteger(const QJsonObject &object, const QString &key, std::int64_t &value)
{
  return ReadInteger(object.value(key), value);
}

bool ReadString(const QJsonObject &object, const QString &key, QString &value)
{
  return ReadString(object.value(key), value);
}

void ParseBoolean(const QJsonObject &object, const QString &key, bool &value)
{
  value = false;
  ReadBoolean(object, key, value);
}

void ParseInteger(const QJsonObject &object, const QString &key, std::int32_t &value)
{
  value = -1;
  ReadInteger(object, key, value);
}

void ParseInteger(const QJsonObject &object, const QString &key, std::int64_t &value)
{
  value = -1;
  ReadInteger(object, key, value);
}

void ParseString(const QJsonObject &object, const QString &key, QString &value)
{
  value.clear();
  ReadString(object, key, value);
}

namespace {
// Fills id and the text member of a small reference object of the service.
template <typename TSub>
void ParseSub(const QJsonValue &member, TSub &value, QString TSub::*text, const QString &textKey)
{
  value = TSub{};
  if (!member.isObject())
    return;
  const QJsonObject sub = member.toObject();
  ReadInteger(sub, QStringLiteral("id"), value.id);
  ReadString(sub, textKey, value.*text);
}
} // namespace

void ParseSubName(const QJsonValue &member, tyRestSubName &value)
{
  ParseSub(member, value, &tyRestSubName::name, QStringLiteral("name"));
}

void ParseSubDesc(const QJsonValue &member, tyRestSubDescription &value)
{
  ParseSub(member, value, &tyRestSubDescription::description, QStringLiteral("description"));
}

void ParseSubName(const QJsonObject &object, const QString &key, tyRestSubName &value)
{
  ParseSubName(object.value(key), value);
}

void ParseSubDesc(const QJsonObject &object, const QString &key, tyRestSubDescription &value)
{
  ParseSubDesc(object.value(key), value);
}

QList<tyRestSubName> ReadSubNames(const QJsonObject &object, const QString &key)
{
  QList<tyRestSubName> names;
  const QJsonArray items = object.value(key).toArray();
  names.reserve(items.size());
  for (const QJsonValue &item : items) {
    tyRestSubName name;
    ReadInteger(item.toObject(), QStringLiteral("id"), name.id);
    ReadString(item.toObject(), QStringLiteral("name"), name.name);
    names.append(name);
  }
  return names;
}
