#include "core/IniFile.h"
#include "core/uTools.h"
#include "support/TempConfig.h"
#include "tickets/ColourStore.h"
#include "tickets/StatusPriorities.h"

#include <gtest/gtest.h>

namespace {

class ColoursTest : public ::testing::Test
{
protected:
  TTempConfig FConfig;
  QString FPath = FConfig.File("quorvex-followup.ini");
  TColourStore FStore{FPath};
};

tyRestObject Object(const QString &reference, const QString &subType = QString())
{
  tyRestObject object;
  object._reference = reference;
  object.subType = subType;
  return object;
}

} // namespace

TEST_F(ColoursTest, DefaultsAreWrittenAndStoredColoursWin)
{
  EXPECT_EQ(ColorToHtml1(FStore.GetSavedColor(Setting::StatusColours, "New")), "#E57373");
  EXPECT_EQ(ColorToHtml1(FStore.GetSavedColor(Setting::StatusColours, "Autocompleted")), "#FFFFFF");
  EXPECT_EQ(ColorToHtml1(TColourStore::DefaultColor(Setting::StatusColours, "waiting")), "#FFFFFF"); // defaults by exact name
  EXPECT_EQ(ColorToHtml1(FStore.GetSavedColor(Setting::PriorityColours, "P5")), "#64B5F6");
  EXPECT_EQ(ColorToHtml1(FStore.GetSavedColor(Setting::PriorityColours, "R1")), "#F4511E");
  EXPECT_EQ(ColorToHtml1(FStore.GetSavedColor(Setting::PriorityColours, "")), "#FFFFFF");
  EXPECT_TRUE(ReadTextFile(FPath).contains("[Status]\nNew=7566309\n")) << ReadTextFile(FPath).toStdString();

  WriteTextFile(FPath, "[Status]\nNew=255\nCustom=65280\nBroken=abc\n");
  EXPECT_EQ(FStore.GetSavedColor(Setting::StatusColours, "New"), 255);     // the file changed: read again
  EXPECT_EQ(FStore.GetSavedColor(Setting::StatusColours, "Custom"), 65280); // also for names outside the table
  EXPECT_EQ(FStore.GetSavedColor(Setting::StatusColours, "Broken"), clWhite);
  EXPECT_TRUE(ReadTextFile(FPath).contains("Broken=abc")); // a stored value is never rewritten
}

TEST_F(ColoursTest, PriorityCodeFromTheLongText)
{
  EXPECT_EQ(FStore.GetPriorityText("High [P2]"), "P2");
  EXPECT_EQ(FStore.GetPriorityText("INCIDENT - Critical p1"), "P1");
  EXPECT_EQ(FStore.GetPriorityText("Low priority"), "");
  EXPECT_EQ(FStore.GetPriorityText("Something [] else"), "");
  EXPECT_EQ(FStore.GetPriorityText("REQUEST - [ Urgent ]"), "Urgent");
  EXPECT_EQ(FStore.GetPriorityText("ends with P5"), ""); // P5 is not a recognised ending

  const TIniFile ini(FPath);
  EXPECT_EQ(ini.ReadString("PriorityLong", "High [P2]", "?"), "P2");
  EXPECT_EQ(ini.ReadString("PriorityLong", "INCIDENT - Critical p1", "?"), "P1");
  EXPECT_EQ(ini.ReadString("PriorityLong", "Low priority", "?"), "?"); // nothing stored
  EXPECT_TRUE(ini.ValueExists("PriorityLong", "Something [] else"));   // stored although empty

  // A remembered code of two characters wins; another is computed again.
  WriteTextFile(FPath, "[PriorityLong]\nHigh [P2]= O3 \nOdd [P2]=ABC\n");
  EXPECT_EQ(FStore.GetPriorityText("High [P2]"), "O3");
  EXPECT_EQ(FStore.GetPriorityText("Odd [P2]"), "P2");
}

TEST_F(ColoursTest, StatusListIsSortedUniqueIgnoringCase)
{
  const tyRestObjects statuses =
      BuildStatusList({Object("Waiting"), Object("new"), Object("In progress"), Object("New"), Object("waiting")},
                      FStore);
  ASSERT_EQ(statuses.size(), 3);
  const QStringList sorted{"In progress", "new", "Waiting"}; // the first spelling met is kept
  for (int i = 0; i < statuses.size(); ++i)
    EXPECT_EQ(std::tie(statuses[i].id, statuses[i]._reference, statuses[i].Text),
              std::tie(i, sorted[i], sorted[i]));
  EXPECT_EQ(ColorToHtml1(statuses[0].BgColor), "#9FA8DA");
}

TEST_F(ColoursTest, PriorityListUsesSubTypeAndCode)
{
  const tyRestObjects priorities = BuildPriorityList(
      {Object("Critical P1", "INCIDENT"), Object("[R2] Normal", "REQUEST"), Object("critical p1", "incident"),
       Object("Whatever", "CHANGE")},
      FStore);
  ASSERT_EQ(priorities.size(), 3);
  const auto row = [](const tyRestObject &p) {
    return QStringList{QString::number(p.id), p._reference, p.Text, ColorToHtml1(p.BgColor)};
  };
  EXPECT_EQ(row(priorities[0]), (QStringList{"0", "CHANGE - Whatever", "", "#FFFFFF"}));
  EXPECT_EQ(row(priorities[1]), (QStringList{"1", "INCIDENT - Critical P1", "P1", "#F4511E"}));
  EXPECT_EQ(row(priorities[2]).mid(0, 3), (QStringList{"2", "REQUEST - [R2] Normal", "R2"}));
}
