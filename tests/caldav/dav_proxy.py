#!/usr/bin/python3
"""An HTTP proxy in front of a calendar server, for the faults a real network brings.

dav_proxy.py UPSTREAM_PORT MODE [N]
  cut N   pass everything, but break the connection once N bytes of answers have gone back
  full    answer every PUT with 507 Insufficient Storage, pass the rest
Prints its port on the first line of standard output.
"""
import http.client
import socket
import sys
import threading
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

upstream = int(sys.argv[1])
mode = sys.argv[2]
limit = int(sys.argv[3]) if len(sys.argv) > 3 else 0
sent = 0
lock = threading.Lock()


class Handler(BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, *args):
        pass

    def handle_any(self):
        global sent
        length = int(self.headers.get("Content-Length") or 0)
        body = self.rfile.read(length) if length else None
        if mode == "full" and self.command == "PUT":
            message = b"insufficient storage"
            self.send_response(507)
            self.send_header("Content-Length", str(len(message)))
            self.end_headers()
            self.wfile.write(message)
            return
        connection = http.client.HTTPConnection("127.0.0.1", upstream)
        headers = {k: v for k, v in self.headers.items() if k.lower() not in ("host", "connection")}
        connection.request(self.command, self.path, body=body, headers=headers)
        answer = connection.getresponse()
        data = answer.read()
        head = "HTTP/1.1 %d %s\r\n" % (answer.status, answer.reason)
        for k, v in answer.getheaders():
            if k.lower() not in ("transfer-encoding", "connection", "content-length"):
                head += "%s: %s\r\n" % (k, v)
        head += "Content-Length: %d\r\n\r\n" % len(data)
        whole = head.encode("latin-1") + data
        with lock:
            room = limit - sent if mode == "cut" else len(whole)
            sent += len(whole)
        if room < len(whole):
            self.wfile.write(whole[: max(room, 0)])
            self.wfile.flush()
            self.connection.shutdown(socket.SHUT_RDWR)
            self.close_connection = True
            return
        self.wfile.write(whole)

    do_GET = do_PUT = do_DELETE = do_PROPFIND = do_REPORT = do_MKCALENDAR = do_OPTIONS = do_HEAD = handle_any


server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
print(server.server_address[1], flush=True)
server.serve_forever()
