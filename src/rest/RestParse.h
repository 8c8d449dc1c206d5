#pragma once

#include "uTypes.h"

#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <cstdint>

// Helpers that read one member of a JSON object into a record field. Each first
// presets the target; a member that is absent, null or of another type leaves the
// preset in place.

// Preset false.
void ParseBoolean(const QJsonObject &object, const QString &key, bool &value);
// Preset -1, so that an absent integer reads as -1.
void ParseInteger(const QJsonObject &object, const QString &key, std::int32_t &value);
void ParseInteger(const QJsonObject &object, const QString &key, std::int64_t &value); // ids
// Preset empty.
void ParseString(const QJsonObject &object, const QString &key, QString &value);
// Preset id 0 and empty text; then "id" and "name" of the member when it is an object.
void ParseSubName(const QJsonObject &object, const QString &key, tyRestSubName &value);
// Same with "id" and "description".
void ParseSubDesc(const QJsonObject &object, const QString &key, tyRestSubDescription &value);

// Readers that change the target only when the member is present with the right
// type, so a record field keeps its zero value otherwise; they return whether they
// read it. An integer must be a whole number that fits its field (ids: 64 bits).
bool ReadBoolean(const QJsonObject &object, const QString &key, bool &value);
bool ReadInteger(const QJsonObject &object, const QString &key, std::int32_t &value);
bool ReadInteger(const QJsonObject &object, const QString &key, std::int64_t &value);
bool ReadString(const QJsonObject &object, const QString &key, QString &value);

// The same, given the member itself (for a reader that walks an object's
// members once instead of looking each up by name).
bool ReadBoolean(const QJsonValue &member, bool &value);
bool ReadInteger(const QJsonValue &member, std::int32_t &value);
bool ReadInteger(const QJsonValue &member, std::int64_t &value);
bool ReadString(const QJsonValue &member, QString &value);
void ParseSubName(const QJsonValue &member, tyRestSubName &value);
void ParseSubDesc(const QJsonValue &member, tyRestSubDescription &value);

// Every element of the array member `key` as an {"id","name"} record, in order.
QList<tyRestSubName> ReadSubNames(const QJsonObject &object, const QString &key);
