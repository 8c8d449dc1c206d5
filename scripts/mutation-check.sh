#!/usr/bin/env bash
# Changes the rules that matter most, one at a time, in a copy of the sources, and
# checks that the tests notice each change ("killed"). Builds in build-mutation
# (configured as scripts/build.sh configures build), rebuilds only the test
# programs concerned and runs only their tests. The working tree is never touched.
# Prints "N killed, M survived" and fails when a change survives.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
work=$root/build-mutation
copy=$work/source

# name | file | perl substitution (whole file) | test programs | ctest pattern
mutations=(
  "unassigned threshold not strict|src/report/MailReport.cpp|s/WholeUnits\(days, 24 \* 60\) > /WholeUnits(days, 24 * 60) >= /|test_mail_report|^MailReportTest\."
  "unassigned measured from now|src/report/MailReport.cpp|s/creationDate\) - FIn.ExtractionTickets\)/creationDate) - FCurrentTime)/|test_mail_report|^MailReportTest\."
  "blank assignee counts as assigned|src/report/MailReport.cpp|s/!TrimBlanks\(ticket.assignedUser.name\).isEmpty\(\)/!ticket.assignedUser.name.isEmpty()/|test_mail_report|^MailReportTest\."
  "without-update threshold not strict|src/report/MailReport.cpp|s/< FCurrentTime - FIn.NbDays/<= FCurrentTime - FIn.NbDays/|test_mail_report|^MailReportTest\."
  "without-update measured from the extraction|src/report/MailReport.cpp|s/< FCurrentTime - FIn.NbDays/< FIn.ExtractionTickets - FIn.NbDays/|test_mail_report|^MailReportTest\."
  "exempt statuses not exempt|src/report/MailReport.cpp|s/!FIn.StatusToIgnore.contains\(ticket.status._reference, Qt::CaseInsensitive\) &&//|test_mail_report|^MailReportTest\."
  "without-update outside the selected teams|src/report/MailReport.cpp|s/&&\s*TeamInSelectedTeams\(FIn.SelectedTeams, ticket.assignedTeam.id\)//|test_mail_report|^MailReportTest\."
  "ages counted from the extraction|src/report/MailReport.cpp|s/AgeOf\(moment, FCurrentTime, age\)/AgeOf(moment, FIn.ExtractionTickets, age)/|test_mail_report|^MailReportTest\."
  "address lists not sorted|src/report/MailReport.cpp|s/  addresses.sort\(\);\n//|test_mail_report|^MailReportTest\."
  "inactive operators addressed|src/report/MailReport.cpp|s/op.status == CActive && //|test_mail_report|^MailReportTest\."
  "primary recipients copied too|src/report/MailReport.cpp|s/if \(FOut.SlRecipientTo.contains\(key\) \x7c\x7c /if (/|test_mail_report|^MailReportTest\."
  "ten-exchanges section shown when empty|src/report/MailReport.cpp|s/(NbGt10Exch = [^\n]*\n)  if \(rows.isEmpty\(\)\)\n    return;\n/\$1/|test_mail_report|^MailReportTest\."
  "service text written as HTML|src/report/MailReport.cpp|s/QString content = cell.Text.toHtmlEscaped\(\);/QString content = cell.Text;/|test_mail_report|^MailReportTest\."
  "service names written as HTML|src/report/MailReport.cpp|s/join\(QStringLiteral\(\", \"\)\).toHtmlEscaped\(\)/join(QStringLiteral(\", \"))/|test_mail_report|^MailReportTest\."
  "token reused three hours too long|src/rest/dRest.cpp|s/api.TokenValidity, 9, &hours/api.TokenValidity, 6, \&hours/|test_rest_token|^Token\."
  "no default exempt status|src/core/Settings.cpp|s/if \(count <= 0\) \{\n    statusToIgnore.append/if (count < 0) {\n    statusToIgnore.append/|test_settings|^SettingsTest\."
  "paging bound one page longer|src/rest/TicketPage.h|s/\/ CTicketPageSize \+ 1\)/\/ CTicketPageSize + 2)/|test_rest_tickets|^TicketsList\."
  "surplus tickets kept|src/rest/TicketRetrieval.cpp|s/  if \(trim && query.TotalElements >= 0 && tickets.size\(\) > query.TotalElements\)\n    tickets.resize\(query.TotalElements\);\n//|test_rest_tickets|^TicketsList\."
  "French notices not merged|src/tickets/TenExchanges.cpp|s/  for \(const tyRestTicket &ticket : foundFrench\)\n    flagged.insert\(ticket.id\);\n//|test_selection|^TenExchanges\."
  "Filters dialog not copied back on OK|src/tickets/gui/TfrmFilters.cpp|s/  statuses = dialog.Statuses\(\);\n//|test_ticket_dialogs|^FiltersDialog\."
)

restore() { [ -n "${current:-}" ] && cp -p "$root/$current" "$copy/$current"; current=; }
trap restore EXIT
trap 'restore; exit 130' INT TERM

mkdir -p "$copy"
for part in CMakeLists.txt cmake src tests dist bench fuzz; do
  rm -rf "${copy:?}/$part"
  cp -a "$root/$part" "$copy/"
done
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
[ -f "$work/build/CMakeCache.txt" ] ||
  cmake -S "$copy" -B "$work/build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${launcher[@]}" >/dev/null

killed=0
survivors=()
for entry in "${mutations[@]}"; do
  IFS='|' read -r name file change targets pattern <<<"$entry"
  current=$file
  perl -0pi -e "$change" "$copy/$file"
  if cmp -s "$root/$file" "$copy/$file"; then
    echo "ERROR: the change \"$name\" no longer applies to $file; update it in $0" >&2
    exit 2
  fi
  # shellcheck disable=SC2086
  if ! cmake --build "$work/build" --target $targets >"$work/last-build.log" 2>&1; then
    echo "ERROR: with the change \"$name\" the tests do not compile; see $work/last-build.log" >&2
    exit 2
  fi
  if ctest --test-dir "$work/build" -R "$pattern" >"$work/last-test.log" 2>&1; then
    result=survived
  else
    result=killed
  fi
  echo "$result: $name"
  if [ "$result" = killed ]; then killed=$((killed + 1)); else survivors+=("$name"); fi
  restore
done
echo "$killed killed, ${#survivors[@]} survived"
for name in "${survivors[@]}"; do echo "survived: $name"; done
[ ${#survivors[@]} -eq 0 ]
