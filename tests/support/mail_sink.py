"""An SMTP server for the tests that keeps every message it is given, taken apart.

Usage: /usr/bin/python3 mail_sink.py FOLDER PORT [--refuse]
Listens on 127.0.0.1:PORT (aiosmtpd) and prints "ready" once it does. Each message accepted is
saved as FOLDER/N/ (N = 1, 2, ...; the folder appears whole, after its contents are written):
  message.eml    the bytes as received
  envelope.json  {"from": ..., "to": [...]}
  headers.json   the top-level headers as [name, value] pairs, in order
  parts.json     the leaf parts in order: {"content_type", "filename", "disposition", "file"}
  part-K         each part's decoded bytes (K from 1)
Python's own e-mail parser does the taking apart, independently of the program's MIME writer.
With --refuse every message is answered "550" and nothing is kept.
"""
import email
import email.policy
import json
import os
import signal
import sys
import threading

from aiosmtpd.controller import Controller

folder, port = sys.argv[1], int(sys.argv[2])
refuse = "--refuse" in sys.argv[3:]


class Handler:
    def __init__(self):
        self.count = 0
        self.lock = threading.Lock()

    async def handle_DATA(self, server, session, envelope):
        if refuse:
            return "550 Requested action not taken: mailbox unavailable"
        with self.lock:
            self.count += 1
            number = self.count
        raw = envelope.original_content or envelope.content
        staging = os.path.join(folder, ".%d" % number)
        os.makedirs(staging)
        with open(os.path.join(staging, "message.eml"), "wb") as out:
            out.write(raw)
        with open(os.path.join(staging, "envelope.json"), "w") as out:
            json.dump({"from": envelope.mail_from, "to": envelope.rcpt_tos}, out)
        message = email.message_from_bytes(raw, policy=email.policy.compat32)
        with open(os.path.join(staging, "headers.json"), "w") as out:
            json.dump([[name, str(value)] for name, value in message.items()], out)
        parts = []
        for part in message.walk():
            if part.is_multipart():
                continue
            name = "part-%d" % (len(parts) + 1)
            with open(os.path.join(staging, name), "wb") as out:
                out.write(part.get_payload(decode=True) or b"")
            parts.append({
                "content_type": part.get_content_type(),
                "filename": part.get_filename(),
                "disposition": part.get_content_disposition(),
                "charset": part.get_content_charset(),
                "file": name,
            })
        with open(os.path.join(staging, "parts.json"), "w") as out:
            json.dump(parts, out)
        os.rename(staging, os.path.join(folder, str(number)))
        return "250 Message accepted for delivery"


# Blocked before the server's thread starts, so that only sigwait() below sees them.
signal.pthread_sigmask(signal.SIG_BLOCK, {signal.SIGTERM, signal.SIGINT})
controller = Controller(Handler(), hostname="127.0.0.1", port=port)
controller.start()
print("ready", flush=True)
signal.sigwait({signal.SIGTERM, signal.SIGINT})
controller.stop()
