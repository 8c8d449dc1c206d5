#!/usr/bin/env python3
"""SMTP server of the mail tests, on 127.0.0.1.

Prints "READY <port>" once it accepts connections and stops when its standard
input closes. Each message received is summarised, parsed by Python's email
package, as <n>.json in the output folder: envelope, session (TLS, login),
headers and every leaf part (its text, or an attachment's bytes in Base64).
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
    """The relay's faults are its options: refused recipients (ADDRESS or
    ADDRESS=CODE), a delay before each reply, a limit of recipients per message,
    temporary refusals of DATA, a connection dropped at a given message."""

    def __init__(self, folder, args):
        self.folder = pathlib.Path(folder)
        self.refused = dict((r.split("=") + ["550"])[:2] for r in args.refuse)
        self.stall = args.stall_after_data
        self.delay = args.delay
        self.max_recipients = args.max_recipients
        self.fail_data = args.fail_data
        self.drop_at = args.drop_at
        self.data_count = 0
        self.count = 0

    async def handle_MAIL(self, server, session, envelope, address, mail_options):
        await asyncio.sleep(self.delay)
        envelope.mail_from = address
        envelope.mail_options.extend(mail_options)
        return "250 OK"

    async def handle_RCPT(self, server, session, envelope, address, rcpt_options):
        await asyncio.sleep(self.delay)
        if address in self.refused:
            return REPLIES[self.refused[address]] % address
        if self.max_recipients and len(envelope.rcpt_tos) >= self.max_recipients:
            return "452 4.5.3 Too many recipients"
        envelope.rcpt_tos.append(address)
        return "250 OK"

    async def handle_DATA(self, server, session, envelope):
        await asyncio.sleep(self.delay)
        self.data_count += 1
        if self.data_count in self.drop_at:
            server.transport.close()
            return "421 closing"
        if self.data_count <= self.fail_data:
            return "451 4.3.0 temporary failure, try again"
        if self.stall:
            # A server that takes the whole message and then never answers.
            await asyncio.sleep(3600)
        message = email.message_from_bytes(envelope.original_content, policy=email.policy.default)
        headers = {}
        for name in ("Subject", "From", "To", "Cc", "Date", "Message-ID", "Auto-Submitted",
                     "X-Auto-Response-Suppress"):
            if message[name] is not None:
                headers[name] = str(message[name])
        parts = []
        for part in message.walk():
            if part.is_multipart():
                continue
            content = part.get_content()
            leaf = {"type": part.get_content_type(), "filename": part.get_filename()}
            if isinstance(content, str):
                leaf["text"] = content
            else:
                leaf["data"] = base64.b64encode(content).decode()
            parts.append(leaf)
        summary = {"mail_from": envelope.mail_from, "rcpt_tos": envelope.rcpt_tos, "peer": session.peer[1],
                   "raw": envelope.original_content.decode("utf-8", "replace"),
                   "tls": session.ssl is not None or server.transport.get_extra_info("ssl_object") is not None,
                   "authenticated": bool(session.authenticated),
                   "content_type": message.get_content_type(), "headers": headers, "parts": parts}
        self.count += 1
        path = self.folder / ("%03d.json" % self.count)
        path.with_suffix(".tmp").write_text(json.dumps(summary))
        path.with_suffix(".tmp").rename(path)
        return "250 Message accepted"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--mode", choices=["plain", "starttls", "smtps"], default="plain")
    parser.add_argument("--port", type=int, default=0)
    parser.add_argument("--cert")
    parser.add_argument("--key")
    parser.add_argument("--user")
    parser.add_argument("--password")
    parser.add_argument("--refuse", action="append", default=[])
    parser.add_argument("--stall-after-data", action="store_true")
    parser.add_argument("--delay", type=float, default=0)
    parser.add_argument("--max-recipients", type=int, default=0)
    parser.add_argument("--fail-data", type=int, default=0, help="answer 451 to the first N DATA")
    parser.add_argument("--drop-at", type=int, action="append", default=[], help="drop the connection at DATA N")
    parser.add_argument("--out", required=True)
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
        context.load_cert_chain(args.cert, args.key)
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

    controller = Controller(Recorder(args.out, args), **options)
    controller.start()
    print("READY %d" % port, flush=True)
    sys.stdin.read()
    controller.stop()


if __name__ == "__main__":
    main()
