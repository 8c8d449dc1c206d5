#include "StatusPriorities.h"

#include "ColourStore.h"

#include <QCollator>
#include <algorithm>

QStringList SortedUniqueIgnoringCase(const QStringList &texts)
{
  QCollator collator{QLocale()};
  collator.setCaseSensitivity(Qt::CaseInsensitive);
  QStringList sorted;
  for (const QString &text : texts) {
    const auto at = std::lower_bound(sorted.begin(), sorted.end(), text,
                                     [&](const QString &a, const QString &b) { return collator.compare(a, b) < 0; });
    if (at == sorted.end() || collator.compare(*at, text) != 0)
      sorted.insert(at, text);
  }
  return sorted;
}

tyRestObjects BuildStatusList(const tyRestObjects &objects, TColourStore &colours)
{
  QStringList references;
  for (const tyRestObject &object : objects)
    references.append(object._reference);
  tyRestObjects statuses;
  for (const QString &name : SortedUniqueIgnoringCase(references)) {
    tyRestObject status;
    status.id = static_cast<std::int32_t>(statuses.size());
    status._reference = name;
    status.Text = name;
    status.BgColor = colours.GetSavedColor(Setting::StatusColours, name);
    statuses.append(status);
  }
  return statuses;
}

tyRestObjects BuildPriorityList(const tyRestObjects &objects, TColourStore &colours)
{
  QStringList keys;
  for (const tyRestObject &object : objects)
    keys.append(object.subType + QStringLiteral(" - ") + object._reference);
  tyRestObjects priorities;
  for (const QString &key : SortedUniqueIgnoringCase(keys)) {
    tyRestObject priority;
    priority.id = static_cast<std::int32_t>(priorities.size());
    priority._reference = key;
    priority.Text = colours.GetPriorityText(key);
    priority.BgColor = colours.GetSavedColor(Setting::PriorityColours, priority.Text);
    priorities.append(priority);
  }
  return priorities;
}
