#include "state/FailureSummary.h"

#include <gtest/gtest.h>

// A service that is down fails every query for one reason: one line says so,
// before a cause met once, and warnings come last.
TEST(FailureSummary, OneLinePerCauseTheWidestFirstWarningsLast)
{
  const QString refused = "the connection was refused by 127.0.0.1:44573; check that the service is running";
  TFailures failures{{"Settings", "organization 0 has no id", "", false},
                         {"Acme / ticket 7", "its lastUpdate \"x\" is not a date", "", true}};
  for (const QString organization : {"Acme", "Beta", "Gamma"})
    for (const QString query : {" / open tickets", " / > 10 exchanges (E)", " / > 10 échanges (F)"})
      failures.append({organization + query, refused, "https://127.0.0.1:44573/api/ticket/list/open", false});
  EXPECT_EQ(FailureLines(failures),
            (QStringList{"Acme / open tickets and 8 more: " + refused, "Settings: organization 0 has no id",
                         "Acme / ticket 7: its lastUpdate \"x\" is not a date"}));
  const QString details = FailureDetails(failures);
  EXPECT_EQ(details.count('\n'), 10);
  EXPECT_TRUE(details.contains("Gamma / > 10 échanges (F): " + refused +
                               " [https://127.0.0.1:44573/api/ticket/list/open]"));
}
