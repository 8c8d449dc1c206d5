#pragma once

#include "rest/uTypes.h"

#include <QStringList>

// Replaces each operator's notification address by the addr-spec ParseMailbox
// makes of it; an address that cannot be used is emptied (that operator is not
// mailed) and named in the returned warnings, with the operator's id and the
// field. An empty address stays empty without a warning.
QStringList KeepUsableAddresses(tyRestOperators &operators);
