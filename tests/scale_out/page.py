"""Serves the page of docs/scale-out/janus and viewers.html beside it, on a free port that it prints first; then, a line
each, what the page reports."""

import http.server
import os

HERE = os.path.dirname(os.path.abspath(__file__))
JANUS = os.path.join(os.path.dirname(os.path.dirname(HERE)), "docs", "scale-out", "janus")


class Files(http.server.SimpleHTTPRequestHandler):
    def translate_path(self, path):
        name = os.path.basename(path.split("?")[0])
        return os.path.join(HERE if name == "viewers.html" else JANUS, name)

    def do_POST(self):
        print(self.rfile.read(int(self.headers["Content-Length"])).decode(), flush=True)
        self.send_response(204)
        self.end_headers()

    def log_message(self, *_):
        pass


server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Files)
print(server.server_port, flush=True)
server.serve_forever()
