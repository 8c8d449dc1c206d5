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
  // Defaults by exact name; a priority without a code is white.
  EXPECT_EQ(ColorToHtml1(FStore.GetSavedColor(Setting::StatusColours, "New")), "#E57373");
  EXPECT_EQ(ColorToHtml1(TColourStore::DefaultColor(Setting::StatusColours, "waiting")), "#FFFFFF");
  EXPECT_EQ(ColorToHtml1(FStore.GetSavedColor(Setting::PriorityColours, "R1")), "#F4511E");
  EXPECT_EQ(ColorToHtml1(FStore.GetSavedColor(Setting::PriorityColours, "")), "#FFFFFF");
  EXPECT_TRUE(ReadTextFile(FPath).contains("[Status]\nNew=7566309\n")) << ReadTextFile(FPath).toStdString();

  // The file changed: read again, also for names outside the table; a stored value is never rewritten.
  WriteTextFile(FPath, "[Status]\nNew=255\nCustom=65280\nBroken=abc\n");
  EXPECT_EQ((QList<TColor>{FStore.GetSavedColor(Setting::StatusColours, "New"),
                           FStore.GetSavedColor(Setting::StatusColours, "Custom"),
                           FStore.GetSavedColor(Setting::StatusColours, "Broken")}),
            (QList<TColor>{255, 65280, clWhite}));
  EXPECT_TRUE(ReadTextFile(FPath).contains("Broken=abc"));
}

// The code in brackets or a P<n> ending, remembered under the long text (even
// when empty); a remembered code of two characters wins, another is computed again.
TEST_F(ColoursTest, PriorityCodeFromTheLongText)
{
  const std::pair<const char *, const char *> codes[] = {
      {"High [P2]", "P2"},      {"INCIDENT - Critical p1", "P1"},   {"Low priority", ""},
      {"Something [] else", ""}, {"REQUEST - [ Urgent ]", "Urgent"}, {"ends with P5", ""}};
  for (const auto &[text, code] : codes)
    EXPECT_EQ(FStore.GetPriorityText(text), code) << text;
  const TIniFile ini(FPath);
  EXPECT_EQ(ini.ReadString("PriorityLong", "INCIDENT - Critical p1", "?"), "P1");
  EXPECT_EQ(ini.ReadString("PriorityLong", "Low priority", "?"), "?");
  EXPECT_TRUE(ini.ValueExists("PriorityLong", "Something [] else"));

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
