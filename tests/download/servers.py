"""Servers on 127.0.0.1 for the download tests. Prints the port it listens on, then serves until killed.

    servers.py ftp FOLDER      anonymous, read-only FTP of FOLDER (pyftpdlib)
    servers.py hostile         a listing page of dangerous names and a 2 MiB service file, over HTTP
"""
import http.server
import sys

kind = sys.argv[1]

if kind == "ftp":
    from pyftpdlib.authorizers import DummyAuthorizer
    from pyftpdlib.handlers import FTPHandler
    from pyftpdlib.servers import FTPServer

    authorizer = DummyAuthorizer()
    authorizer.add_anonymous(sys.argv[2])
    FTPHandler.authorizer = authorizer
    FTPHandler.use_sendfile = False
    server = FTPServer(("127.0.0.1", 0), FTPHandler)
    print(server.address[1], flush=True)
    server.serve_forever(handle_exit=False)
elif kind == "hostile":
    names = ["../x.isf", "a/b.isf", "%2E%2E%2Fy.isf", "line%0Abreak.isf", "a%5Cb.isf", ".hidden.isf",
             "x" * 201 + ".isf", "big.isf", "fine.isf"]
    files = {"/": "".join('<a href="%s">%s</a>\n' % (n, n) for n in names).encode(),
             "/big.isf": b"[Settings]\r\n" + b"x" * (2 * 1024 * 1024),
             "/fine.isf": b"[Settings]\r\nURL=http://example.org/?\r\n"}

    class Hostile(http.server.BaseHTTPRequestHandler):
        def do_GET(self):
            if self.path not in files:
                return self.send_error(404)
            self.send_response(200)
            # The big file does not announce its size: the client must stop it by counting.
            if self.path != "/big.isf":
                self.send_header("Content-Length", str(len(files[self.path])))
            self.end_headers()
            self.wfile.write(files[self.path])

        def log_message(self, *args):
            pass

    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Hostile)
    print(server.server_address[1], flush=True)
    server.serve_forever()
else:
    sys.exit("unknown server " + kind)
