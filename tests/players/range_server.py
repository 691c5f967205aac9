"""A web server for one directory, on the loopback interface alone, which answers requests for a part of a file."""

import functools
import http.server
import re
import shutil
import threading
from http import HTTPStatus

RANGE = re.compile(r"^bytes=(\d+)-(\d*)$")


class RangeHandler(http.server.SimpleHTTPRequestHandler):
    extensions_map = {".html": "text/html; charset=utf-8", ".webm": "video/webm", "": "application/octet-stream"}
    protocol_version = "HTTP/1.1"

    def do_GET(self):
        asked = RANGE.match(self.headers.get("Range", ""))
        if asked is None:
            super().do_GET()
        else:
            self.send_part(int(asked[1]), int(asked[2]) if asked[2] else None)

    def send_part(self, first, last):
        try:
            with open(self.translate_path(self.path), "rb") as file:
                content = file.read()
        except OSError:
            self.send_error(HTTPStatus.NOT_FOUND)
            return
        if first >= len(content):
            self.send_error(HTTPStatus.REQUESTED_RANGE_NOT_SATISFIABLE)
            return
        self.server.firsts.append((self.path, first))
        part = content[first:None if last is None else last + 1]
        self.send_response(HTTPStatus.PARTIAL_CONTENT)
        self.send_header("Content-Type", self.guess_type(self.path))
        self.send_header("Content-Length", str(len(part)))
        self.send_header("Content-Range", f"bytes {first}-{first + len(part) - 1}/{len(content)}")
        self.end_headers()
        try:
            self.wfile.write(part)
        except ConnectionError:
            pass  # a player stops reading when it has seen enough

    def end_headers(self):
        self.send_header("Accept-Ranges", "bytes")
        super().end_headers()

    def copyfile(self, source, outputfile):
        try:
            shutil.copyfileobj(source, outputfile)
        except ConnectionError:
            pass  # a player stops reading when it has seen enough

    def log_message(self, format, *arguments):
        pass


class RangeServer:
    """Runs from its construction until close()."""

    def __init__(self, directory):
        handler = functools.partial(RangeHandler, directory=str(directory))
        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), handler)
        self._server.firsts = []  # of each part that was asked for: the file, and where the part begins
        self._thread = threading.Thread(target=self._server.serve_forever, daemon=True)
        self._thread.start()
        self.address = f"http://127.0.0.1:{self._server.server_address[1]}"

    def asked_for(self, name):
        """Where the parts of that file begin that were asked for so far."""
        return [first for path, first in list(self._server.firsts) if path == f"/{name}"]

    def close(self):
        self._server.shutdown()
        self._server.server_close()
        self._thread.join()
