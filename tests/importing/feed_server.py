"""A course-calendar feed on 127.0.0.1 for the tests: serves the files of a folder with ETag and
Last-Modified, answers 304 to a matching If-None-Match or If-Modified-Since, and appends
"<status> <path> <If-None-Match> <If-Modified-Since>" per request to requests.log in that folder.

Usage: feed_server.py PORT FOLDER
"""
import email.utils
import hashlib
import http.server
import os
import sys

FOLDER = sys.argv[2]


class Handler(http.server.BaseHTTPRequestHandler):
    def log_message(self, *args):
        pass

    def record(self, status):
        with open(os.path.join(FOLDER, "requests.log"), "a") as log:
            log.write("%d %s %s %s\n" % (status, self.path, self.headers.get("If-None-Match", "-"),
                                          self.headers.get("If-Modified-Since", "-").replace(" ", "_")))

    def do_GET(self):
        path = os.path.join(FOLDER, os.path.basename(self.path.split("?")[0]))
        if not os.path.isfile(path):
            self.record(404)
            self.send_error(404)
            return
        with open(path, "rb") as f:
            body = f.read()
        etag = '"%s"' % hashlib.md5(body).hexdigest()
        modified = int(os.path.getmtime(path))
        last_modified = email.utils.formatdate(modified, usegmt=True)
        since = self.headers.get("If-Modified-Since")
        unchanged = self.headers.get("If-None-Match") == etag
        if not self.headers.get("If-None-Match") and since:
            parsed = email.utils.parsedate_to_datetime(since)
            unchanged = parsed is not None and modified <= parsed.timestamp()
        if unchanged:
            self.record(304)
            self.send_response(304)
            self.send_header("ETag", etag)
            self.end_headers()
            return
        self.record(200)
        self.send_response(200)
        self.send_header("Content-Type", "text/calendar; charset=utf-8")
        self.send_header("ETag", etag)
        self.send_header("Last-Modified", last_modified)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)


http.server.HTTPServer(("127.0.0.1", int(sys.argv[1])), Handler).serve_forever()
