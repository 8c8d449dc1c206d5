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
  "unassigned threshold not strict|src/report/MailReport.cpp|s/\/ CMillisecondsPerMinute > FIn.NbMinutes/\/ CMillisecondsPerMinute >= FIn.NbMinutes/|test_mail_report|^MailReportTest\."
  "unassigned measured from now|src/report/MailReport.cpp|s/creation->msecsTo\(FIn.ExtractionTickets\)/creation->msecsTo(FCurrentTime)/|test_mail_report|^MailReportTest\."
  "blank assignee counts as assigned|src/report/MailReport.cpp|s/!TrimBlanks\(ticket.assignedUser.name\).isEmpty\(\)/!ticket.assignedUser.name.isEmpty()/|test_mail_report|^MailReportTest\."
  "without-update threshold not strict|src/report/MailReport.cpp|s/> FIn.NbDays \* CMillisecondsPerDay/>= FIn.NbDays * CMillisecondsPerDay/|test_mail_report|^MailReportTest\."
  "without-update measured from the extraction|src/report/MailReport.cpp|s/update->msecsTo\(FCurrentTime\)/update->msecsTo(FIn.ExtractionTickets)/|test_mail_report|^MailReportTest\."
  "exempt statuses not exempt|src/report/MailReport.cpp|s/!FIn.StatusToIgnore.contains\(ticket.status._reference, Qt::CaseInsensitive\) &&//|test_mail_report|^MailReportTest\."
  "without-update outside the selected teams|src/report/MailReport.cpp|s/&&\s*TeamInSelectedTeams\(FIn.SelectedTeams, ticket.assignedTeam.id\)//|test_mail_report|^MailReportTest\."
  "ages counted from the extraction|src/report/MailReport.cpp|s/TCellContext context\{FCurrentTime, /TCellContext context{FIn.ExtractionTickets, /|test_mail_report|^MailReportTest\."
  "address lists not sorted|src/report/MailReport.cpp|s/  addresses.sort\(\);\n//|test_mail_report|^MailReportTest\."
  "inactive operators addressed|src/report/MailReport.cpp|s/op.status == CActive && //|test_mail_report|^MailReportTest\."
  "primary recipients copied too|src/report/MailReport.cpp|s/if \(FOut.SlRecipientTo.contains\(key\) \x7c\x7c /if (/|test_mail_report|^MailReportTest\."
  "ten-exchanges section shown when empty|src/report/MailReport.cpp|s/(NbGt10Exch = [^\n]*\n)  if \(rows.isEmpty\(\)\)\n    return;\n/\$1/|test_mail_report|^MailReportTest\."
  "service text written as HTML|src/report/MailReport.cpp|s/QString content = cell.Text.toHtmlEscaped\(\);/QString content = cell.Text;/|test_mail_report|^MailReportTest\."
  "service names written as HTML|src/report/MailReport.cpp|s/join\(QStringLiteral\(\", \"\)\).toHtmlEscaped\(\)/join(QStringLiteral(\", \"))/|test_mail_report|^MailReportTest\."
  "stamps read without their zone|src/core/uTools.cpp|s/  return moment.toLocalTime\(\);/  return QDateTime(moment.date(), moment.time());/|test_tools test_mail_report|^(RestTimestamp|MailReportTest)\."
  "ages on the clock's face|src/tickets/TicketColumns.cpp|s/return static_cast<std::int32_t>\(from.msecsTo\(to\) \/ unit\);/return static_cast<std::int32_t>(QDateTime(from.date(), from.time(), Qt::UTC).msecsTo(QDateTime(to.date(), to.time(), Qt::UTC)) \/ unit);/|test_mail_report|^MailReportTest\."
  "a date column typed as text|src/tickets/TicketColumns.cpp|s/(\.Caption = QStringLiteral\(\"Creation Date\"\), \.Type = )TCellType::DateTime/\$1TCellType::Text/|test_workbooks|^Workbooks\."
  "a ticket that comes again kept twice|src/rest/TicketRetrieval.cpp|s/if \(query.Ids.contains\(ticket.id\)\) \{/if (false) {/|test_rest_tickets|^TicketsList\."
  "each refused request renews the token|src/rest/TokenProvider.cpp|s/  if \(FRenewing\)\n/  if (false)\n/|test_rest_tickets|^TicketsList\."
  "token reused three hours too long|src/rest/dRest.cpp|s/api.TokenValidity, 9, &hours/api.TokenValidity, 6, \&hours/|test_rest_token|^Token\."
  "no default exempt status|src/core/Settings.cpp|s/if \(count <= 0\) \{\n    statusToIgnore.append/if (count < 0) {\n    statusToIgnore.append/|test_settings|^SettingsTest\."
  "paging bound one page longer|src/rest/TicketPage.h|s/\/ CTicketPageSize \+ 1\)/\/ CTicketPageSize + 2)/|test_rest_tickets|^TicketsList\."
  "surplus tickets kept|src/rest/TicketRetrieval.cpp|s/  if \(trim && query.TotalElements >= 0 && tickets.size\(\) > query.TotalElements\)\n    tickets.resize\(query.TotalElements\);\n//|test_rest_tickets|^TicketsList\."
  "French notices not merged|src/tickets/TenExchanges.cpp|s/  for \(const tyRestTicket &ticket : foundFrench\)\n    flagged.insert\(ticket.id\);\n//|test_selection|^TenExchanges\."
  "Filters dialog not copied back on OK|src/tickets/gui/TfrmFilters.cpp|s/  statuses = dialog.Statuses\(\);\n//|test_ticket_dialogs|^FiltersDialog\."
  "a refused recipient fails the whole mail|src/report/MailSender.cpp|s/CURLOPT_MAIL_RCPT_ALLOWFAILS, 1L/CURLOPT_MAIL_RCPT_ALLOWFAILS, 0L/|test_delivery|^DeliveryTest\."
  "temporary failures not tried again|src/report/ReportSending.cpp|s/constexpr int CTries = 3;/constexpr int CTries = 1;/|test_delivery|^DeliveryTest\."
  "a rerun sends again what was delivered|src/report/ReportSending.cpp|s/if \(!options.Resend\) \{/if (false) {/|test_delivery|^DeliveryTest\."
  "default recipients kept as typed|src/report/DeliveryPlan.cpp|s/full.To = Distinct\(defaultTo\);\n    AddNew\(full.Cc, defaultCc, full.To\);/full.To = defaultTo;\n    full.Cc = defaultCc;/|test_delivery_plan|^DeliveryPlanTest\."
  "copies compared with their case|src/report/DeliveryPlan.cpp|s/if \(!list.contains\(address, Qt::CaseInsensitive\)/if (!list.contains(address, Qt::CaseSensitive)/|test_delivery_plan|^DeliveryPlanTest\."
  "a digest's person found by case|src/report/DeliveryPlan.cpp|s/op.notificationEmail.compare\(address, Qt::CaseInsensitive\) == 0/op.notificationEmail == address/|test_delivery_plan|^DeliveryPlanTest\."
  "SkipWhenClear skips an incomplete retrieval|src/report/DeliveryPlan.cpp|s/return input.RetrievalWarning.isEmpty\(\) && /return /|test_delivery_plan|^DeliveryPlanTest\."
  "a report nobody received remembered|src/state/TMainStateMail.cpp|s/if \(!FDryRun && result.MailsSent > 0\)/if (!FDryRun)/|test_follow_up|^FollowUpTest\."
  "a ticket item without an id kept|src/rest/TicketSchema.h|s/TMember\{\"id\", Id, &T::id, Required\}/TMember{\"id\", Id, \&T::id}/|test_rest_ticket_page|^TicketPage\."
  "announced page count not capped|src/rest/TicketPage.cpp|s/    pages = std::min\(\*pages, MaxPagesFor\(\*elements\)\);\n//|test_rest_ticket_page|^TicketPage\."
  "Retry-After not capped|src/rest/TicketRetrieval.cpp|s/std::clamp<qint64>\(seconds, 0, TTicketRetrieval::CMaxRetryAfterSeconds\)/std::max<qint64>(seconds, 0)/|test_rest_ticket_page|^TicketPage\."
  "full report sent after the digests|src/report/DeliveryPlan.cpp|s/QList<TReportMail>\{full\} \+ digests/digests + QList<TReportMail>{full}/|test_delivery_plan|^DeliveryPlanTest\."
  "control characters let into addresses|src/report/MailAddress.cpp|s/if \(HasControlCharacter\(text\)\)/if (false)/|test_delivery_plan|^MailAddress\."
  "an operators error answer read as nobody|src/rest/dRestReference.cpp|s/if \(call.LastStatus\(\) \/ 100 != 2\) \{\n      call.Fail/if (false) {\n      call.Fail/|test_rest_reference|^ReferenceQueries\."
)

# The restored file gets a new modification time, so that the build sees it change
# and no mutated object outlives its change.
restore() { [ -n "${current:-}" ] && cp "$root/$current" "$copy/$current"; current=; }
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
