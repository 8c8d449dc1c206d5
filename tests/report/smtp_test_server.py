#!/usr/bin/env python3
"""SMTP server of the mail tests, on 127.0.0.1.

Prints "READY <port>" once it accepts connections and stops when its standard
input closes. Its certificate is cert.pem and key.pem in its folder. Each message
received is summarised, parsed by Python's email package, as <n>.json in that
folder: envelope, session (TLS, login),
headers and every leaf part (its text, or an attachment's bytes in Base64).
Its faults are its options (see main).
"""
import argparse
import asyncio
import base64
import email
import email.policy
import json
import logging
import pathlib
import socket
import ssl
import sys
import warnings

from aiosmtpd.controller import Controller
from aiosmtpd.smtp import AuthResult


REPLIES = {
    "550": "550 5.1.1 <%s>: mailbox unavailable",
    "501": "501 5.1.3 <%s>: bad recipient address syntax",
    "450": "450 4.2.1 <%s>: mailbox busy, try again later",
}


class Recorder:
    def __init__(self, args):
        self.args = args
        self.refused = dict((r.split("=") + ["550"])[:2] for r in args.refuse)
        self.data_count = 0

    async def handle_RCPT(self, server, session, envelope, address, rcpt_options):
        await asyncio.sleep(self.args.delay)
        if address in self.refused:
            return REPLIES[self.refused[address]] % address
        if self.args.max_recipients and len(envelope.rcpt_tos) >= self.args.max_recipients:
            return "452 4.5.3 Too many recipients"
        envelope.rcpt_tos.append(address)
        return "250 OK"

    async def handle_DATA(self, server, session, envelope):
        self.data_count += 1
        if self.data_count in self.args.drop_at:
            server.transport.close()
            return "421 closing"
        if self.data_count <= self.args.fail_data:
            return "451 4.3.0 temporary failure, try again"
        if self.args.stall_after_data:
            await asyncio.sleep(3600)  # takes the whole message, then never answers
        message = email.message_from_bytes(envelope.original_content, policy=email.policy.default)
        parts = []
        for part in message.walk():
            if not part.is_multipart():
                content = part.get_content()
                parts.append({"type": part.get_content_type()} |
                             ({"text": content} if isinstance(content, str) else
                              {"data": base64.b64encode(content).decode()}))
        summary = {"mail_from": envelope.mail_from, "rcpt_tos": envelope.rcpt_tos, "peer": session.peer[1],
                   "raw": envelope.original_content.decode("utf-8", "replace"),
                   "tls": session.ssl is not None or server.transport.get_extra_info("ssl_object") is not None,
                   "authenticated": bool(session.authenticated), "content_type": message.get_content_type(),
                   "headers": {name: str(message[name]) for name in ("Subject", "From", "To", "Cc", "Date",
                                                                     "Message-ID") if message[name] is not None},
                   "parts": parts}
        path = pathlib.Path(self.args.dir) / ("%03d.json" % self.data_count)
        path.with_suffix(".tmp").write_text(json.dumps(summary))
        path.with_suffix(".tmp").rename(path)
        return "250 Message accepted"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--mode", choices=["plain", "starttls", "smtps"], default="plain")
    parser.add_argument("--port", type=int, default=0)
    parser.add_argument("--dir", required=True)
    parser.add_argument("--user")
    parser.add_argument("--password")
    parser.add_argument("--refuse", nargs="+", default=[], help="ADDRESS (550) or ADDRESS=450 or ADDRESS=501")
    parser.add_argument("--stall-after-data", action="store_true")
    parser.add_argument("--delay", type=float, default=0, help="seconds before each answer to RCPT")
    parser.add_argument("--max-recipients", type=int, default=0)
    parser.add_argument("--fail-data", type=int, default=0, help="answer 451 to the first N DATA")
    parser.add_argument("--drop-at", type=int, action="append", default=[], help="drop the connection at DATA N")
    args = parser.parse_args()
    # Refused handshakes and logins are what some tests are about: no tracebacks.
    logging.getLogger("mail.log").setLevel(logging.CRITICAL)
    # With smtps the whole session is TLS, which aiosmtpd's check does not see.
    warnings.filterwarnings("ignore", message="Requiring AUTH while not requiring TLS")

    port = args.port
    if port == 0:
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            port = probe.getsockname()[1]

    options = {"hostname": "127.0.0.1", "port": port, "server_hostname": "localhost"}
    if args.mode != "plain":
        context = ssl.create_default_context(ssl.Purpose.CLIENT_AUTH)
        context.load_cert_chain(args.dir + "/cert.pem", args.dir + "/key.pem")
        if args.mode == "smtps":
            options["ssl_context"] = context
        else:
            options["tls_context"] = context
            options["require_starttls"] = True
    if args.user:
        def authenticator(server, session, envelope, mechanism, auth_data):
            ok = auth_data.login.decode() == args.user and auth_data.password.decode() == args.password
            return AuthResult(success=ok, handled=False)
        options["authenticator"] = authenticator
        options["auth_required"] = True
        options["auth_require_tls"] = args.mode == "starttls"

    controller = Controller(Recorder(args), **options)
    controller.start()
    print("READY %d" % port, flush=True)
    sys.stdin.read()
    controller.stop()


if __name__ == "__main__":
    main()
