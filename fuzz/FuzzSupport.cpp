#include "FuzzSupport.h"

#include <QCoreApplication>
#include <QLoggingCategory>

void FuzzInitialize()
{
  static int argc = 1;
  static char name[] = "quorvex-fuzz";
  static char *argv[] = {name, nullptr};
  static QCoreApplication application(argc, argv);
  // The trace would keep every line of millions of runs in memory.
  QLoggingCategory::setFilterRules(QStringLiteral("*=false"));
}
