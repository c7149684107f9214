"""Servers on 127.0.0.1 for the download tests. Prints the port it listens on, then serves until killed.

    servers.py ftp FOLDER      anonymous, read-only FTP of FOLDER (pyftpdlib)
    servers.py hostile         a listing page of dangerous names and a 2 MiB service file, over HTTP
    servers.py silent          accepts connections and never says a word
"""
import http.server
import socket
import sys

kind = sys.argv[1]


def announce(port):
    print(port, flush=True)


if kind == "ftp":
    from pyftpdlib.authorizers import DummyAuthorizer
    from pyftpdlib.handlers import FTPHandler
    from pyftpdlib.servers import FTPServer

    authorizer = DummyAuthorizer()
    authorizer.add_anonymous(sys.argv[2])
    FTPHandler.authorizer = authorizer
    FTPHandler.use_sendfile = False
    server = FTPServer(("127.0.0.1", 0), FTPHandler)
    announce(server.address[1])
    server.serve_forever(handle_exit=False)
elif kind == "hostile":
    names = ["../x.isf", "a/b.isf", "%2E%2E%2Fy.isf", "line%0Abreak.isf", "a%5Cb.isf", ".hidden.isf",
             "x" * 201 + ".isf", "big.isf", "fine.isf"]
    page = "".join('<a href="%s">%s</a>\n' % (n, n) for n in names).encode()

    class Hostile(http.server.BaseHTTPRequestHandler):
        def do_GET(self):
            if self.path == "/":
                body = page
            elif self.path == "/big.isf":
                body = b"[Settings]\r\n" + b"x" * (2 * 1024 * 1024)
            elif self.path == "/fine.isf":
                body = b"[Settings]\r\nURL=http://example.org/?\r\n"
            else:
                self.send_error(404)
                return
            self.send_response(200)
            # The big file does not announce its size: the client must stop it by counting.
            if self.path != "/big.isf":
                self.send_header("Content-Length", str(len(body)))
            self.end_headers()
            self.wfile.write(body)

        def log_message(self, *args):
            pass

    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Hostile)
    announce(server.server_address[1])
    server.serve_forever()
elif kind == "silent":
    listener = socket.socket()
    listener.bind(("127.0.0.1", 0))
    listener.listen(16)
    announce(listener.getsockname()[1])
    kept = []
    while True:
        kept.append(listener.accept()[0])
else:
    sys.exit("unknown server " + kind)
