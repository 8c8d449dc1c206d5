#!/usr/bin/env bash
# Builds what is missing, then starts the tool on demo data: the bundled demo
# service (HTTPS on 127.0.0.1) and a local SMTP sink, with a settings folder of
# their own below ./build (never your real ~/.config). With a display the window
# opens; without one an unattended run is made and the paths of its report, run
# log and received e-mail are printed. Extra arguments go to the tool;
# DEMO_DELIVERY=concerned or personal picks the delivery mode.
# The follow-up's store (quorvex-followup.db) is kept from one run to the next,
# and each run serves the demo tickets one day of the desk's work later, so a
# second run shows what is new and what left the report; DEMO_FRESH=1 starts
# over from day 0 with an empty store.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build.sh >/dev/null

config="$PWD/build/demo-config"
folder="$config/Vellmor/vlmQuorvexITSM"
mailbox="$config/mailbox"
kept="$PWD/build/demo-followup"
[ -n "${DEMO_FRESH:-}" ] && rm -rf "$kept"
mkdir -p "$kept"
day=0
[ -f "$kept/day" ] && day=$(( $(cat "$kept/day") + 1 ))
rm -rf "$config" && mkdir -p "$folder" "$mailbox"/{tmp,new,cur}
cp -p "$kept"/quorvex-followup.db* "$folder"/ 2>/dev/null || true
tool="$PWD/build/src/app/quorvex-followup"

out="$config/demo-service.out"
build/src/demo/quorvex-demo-service --ca-file "$config/demo-ca.pem" --day "$day" >"$out" &
service=$!
smtp_port="$(/usr/bin/python3 -c 'import socket; s=socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')"
/usr/bin/python3 -m aiosmtpd -n -l "127.0.0.1:$smtp_port" -c aiosmtpd.handlers.Mailbox "$mailbox" \
  >"$config/smtp.out" 2>&1 &
smtp=$!
# The store and the day are kept for the next run, however this one ends.
keep() {
  rm -f "$kept"/quorvex-followup.db*
  cp -p "$folder"/quorvex-followup.db* "$kept"/ 2>/dev/null || true
  echo "$day" >"$kept/day"
}
trap 'kill "$service" "$smtp" 2>/dev/null || true; keep' EXIT
for _ in $(seq 100); do grep -q '^Username: ' "$out" && break; sleep 0.1; done
instance="$(sed -n 's/^Instance: //p' "$out")"
[ -n "$instance" ] || { echo "The demo service did not start: $(cat "$out")" >&2; exit 1; }
for _ in $(seq 100); do
  /usr/bin/python3 -c "import socket,sys; socket.create_connection(('127.0.0.1', int(sys.argv[1])), 1)" \
    "$smtp_port" 2>/dev/null && break
  sleep 0.1
done

export XDG_CONFIG_HOME="$config"
export QUORVEX_EXTRA_CA_CERTS="$config/demo-ca.pem"
cat >"$folder/quorvex-followup.ini" <<INI
[QuorvexITSM]
SaaS=0
Instance=$instance
ClientID=followup-demo
ClientSecret=$(printf '%s\n' 'demo secret&=1' | "$tool" --encrypt)
Username=lead@vellmor.example
Password=$(printf '%s\n' 'Pass word&=é' | "$tool" --encrypt)
[SMTP]
Server=127.0.0.1
Port=$smtp_port
UseSSL=0
UserName=
Password=
DefaultTo=servicedesk-leads@vellmor.example
DefaultCC=itsm-followup@vellmor.example
From=noreply@vellmor.example
[Organizations]
Nb=2
id_1=101
name_1=Northwind Logistics
ticketingModuleEnabled_1=1
id_2=102
name_2=Brasserie Lefèvre & Fils
ticketingModuleEnabled_2=1
[Teams]
Nb=2
id_1=11
name_1=Service Desk
id_2=12
name_2=Network & Security
[Delivery]
Mode=${DEMO_DELIVERY:-report}
INI
echo "Demo service (day $day): https://$instance   SMTP sink: 127.0.0.1:$smtp_port   Settings: $folder" >&2

if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
  "$tool" "$@"
  exit
fi

echo "No display: unattended run." >&2
status=0
"$tool" auto "$@" || status=$?
mail="$(ls "$mailbox"/new/* 2>/dev/null | head -n 1 || true)"
report="$config/received-report.html"
if [ -n "$mail" ]; then
  /usr/bin/python3 - "$mail" "$report" <<'PY'
import email, email.policy, sys
message = email.message_from_binary_file(open(sys.argv[1], "rb"), policy=email.policy.default)
html = message.get_body(preferencelist=("html",))
open(sys.argv[2], "w", encoding="utf-8").write(html.get_content())
PY
fi
echo
echo "Exit status:     $status (0 done, 2 a step failed, 3 retrieval incomplete, 4 already running)"
echo "Run log:         $(ls "$folder"/quorvex-followup_*.log)"
echo "Received e-mail: ${mail:-none}"
[ -n "$mail" ] && echo "Its report:      $report (open it in a browser)"
exit "$status"
