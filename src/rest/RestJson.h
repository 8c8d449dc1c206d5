#pragma once

#include <QByteArray>
#include <QJsonObject>

// Compact JSON text of the object in which every character below code 32 and
// above code 127 is written as a \u escape, so that the body is pure ASCII
// whatever the text it carries.
QByteArray AsciiJson(const QJsonObject &object);
