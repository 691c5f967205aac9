"""A web server on the loopback interface alone that hands on what a program writes, as it comes.

Nobody knows yet how long it will be: the answer is sent in chunks, and no part of it can be asked for."""

import http.server
import threading
from pathlib import Path

PIECE_BYTES = 4096


class LiveHandler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def do_GET(self):
        if self.path == "/live.webm":
            self.send_live()
        else:
            self.send_page()

    def send_page(self):
        content = self.server.page.read_bytes()
        self.send_response(200)
        self.send_header("Content-Type", "text/html; charset=utf-8")
        self.send_header("Content-Length", str(len(content)))
        self.end_headers()
        self.wfile.write(content)

    def send_live(self):
        self.send_response(200)
        self.send_header("Content-Type", "video/webm")
        self.send_header("Transfer-Encoding", "chunked")
        self.end_headers()
        try:
            while piece := self.server.take():
                self.wfile.write(f"{len(piece):x}\r\n".encode() + piece + b"\r\n")
            self.wfile.write(b"0\r\n\r\n")
        except ConnectionError:
            pass  # a player that leaves

    def log_message(self, format, *arguments):
        pass


class LiveServer(http.server.ThreadingHTTPServer):
    """Runs from its construction until close(). Of the source it takes no more than so many bytes before go_on()."""

    def __init__(self, page, source, bytes_before):
        super().__init__(("127.0.0.1", 0), LiveHandler)
        self.page = Path(page)
        self._source = source
        self._bytes_before = bytes_before
        self._may_go_on = threading.Event()
        self._lock = threading.Lock()
        self._thread = threading.Thread(target=self.serve_forever, daemon=True)
        self._thread.start()
        self.address = f"http://127.0.0.1:{self.server_address[1]}"

    def take(self):
        with self._lock:
            if self._bytes_before <= 0:
                self._may_go_on.wait()
            piece = self._source.read1(PIECE_BYTES)
            self._bytes_before -= len(piece)
            return piece

    def go_on(self):
        self._may_go_on.set()

    def close(self):
        self.go_on()
        self.shutdown()
        self.server_close()
        self._thread.join()
