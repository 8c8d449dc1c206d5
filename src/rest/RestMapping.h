#pragma once

#include "uTypes.h"

#include <QJsonObject>

// One operator of the operator list, every field read by the parse helper of its
// type from the member of the same name (so an absent integer reads as -1).
tyRestOperator OperatorFromJson(const QJsonObject &item);
