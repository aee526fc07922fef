"""A stand-in for the online service's account check, for the tests.

Usage: /usr/bin/python3 account_check_server.py FOLDER
Listens on 127.0.0.1 at a free port and prints that port on the first line of its output. Every
GET of /userexists.php appends the request path to FOLDER/requests.log and answers with the bytes
of FOLDER/body (empty when the file is missing). Anything else is a 404.
"""
import http.server
import os
import sys

folder = sys.argv[1]


class Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        if not self.path.startswith("/userexists.php"):
            self.send_error(404)
            return
        with open(os.path.join(folder, "requests.log"), "a", encoding="utf-8") as log:
            log.write(self.path + "\n")
        try:
            with open(os.path.join(folder, "body"), "rb") as source:
                body = source.read()
        except FileNotFoundError:
            body = b""
        self.send_response(200)
        self.send_header("Content-Type", "text/plain")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *arguments):
        pass


server = http.server.HTTPServer(("127.0.0.1", 0), Handler)
print(server.server_port, flush=True)
server.serve_forever()
