#!/usr/bin/env python3
"""Transfers between the URL loader and real servers on the loopback address.

Usage: url_servers_test.py PATH-OF-URLFETCH. Exit code 77 means that a server isn't installed.
"""
import ctypes
import os
import shutil
import signal
import socket
import socketserver
import subprocess
import sys
import tempfile
import threading
import time
import unittest

SKIPPED = 77
URLFETCH = ""
FTP_PYTHON = ""

NGINX_CONF = """
daemon off; worker_processes 1; pid {dir}/nginx.pid; error_log {dir}/error.log;
events {{ worker_connections 64; }}
http {{
  access_log off; client_max_body_size 16m;
  client_body_temp_path {dir}/body; proxy_temp_path {dir}/proxy; fastcgi_temp_path {dir}/fastcgi;
  uwsgi_temp_path {dir}/uwsgi; scgi_temp_path {dir}/scgi;
  server {{
    listen 127.0.0.1:{http}; listen 127.0.0.1:{https} ssl;
    ssl_certificate {dir}/cert.pem; ssl_certificate_key {dir}/key.pem;
    root {dir}/www;
    location /login/ {{ auth_basic "x"; auth_basic_user_file {dir}/users; alias {dir}/www/; }}
    location /dav/ {{ dav_methods PUT DELETE; create_full_put_path on; }}
    location /error {{ return 500 "broken"; }}
    location /moved {{ return 302 /a.xml; }}
    location /secure {{ return 301 https://localhost:{https}/a.xml; }}
    location /loop {{ return 302 /loop; }}
    location /tofile {{ return 302 file://{dir}/www/a.xml; }}
    location /slow/ {{ limit_rate 20; alias {dir}/www/; }}
    location /headers {{
      return 200 "$http_user_agent|$http_pragma|$http_cache_control|$http_x_a";
    }}
  }}
}}
"""

FTP_SERVER = """
import sys
from pyftpdlib.authorizers import DummyAuthorizer
from pyftpdlib.handlers import FTPHandler
from pyftpdlib.servers import FTPServer
authorizer = DummyAuthorizer()
authorizer.add_user("ann", "secret", sys.argv[1], perm="elradfmw")
authorizer.add_anonymous(sys.argv[1])
FTPHandler.authorizer = authorizer
FTPHandler.auth_failed_timeout = 0.1
FTPServer(("127.0.0.1", int(sys.argv[2])), FTPHandler).serve_forever()
"""

RAW_ANSWERS = {  # by path: what a misbehaving http server says before it closes
    b"/short": b"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nabc",
    b"/garbage": b"\x00\x01nonsense",
    b"/nothing": b"",
    b"/chunk": b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nab",
    b"/badchunk": b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\nab\r\n0\r\n\r\n",
    b"/longer": b"HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\n<a/>and more",
    b"/negative": b"HTTP/1.1 200 OK\r\nContent-Length: -4\r\n\r\n<a/>",
    b"/longline": b"HTTP/1.1 200 OK\r\nX-Long: " + b"x" * 1000000 + b"\r\n\r\n<a/>",
    b"/huge": b"HTTP/1.1 200 OK\r\nContent-Length: 99999999999\r\n\r\n<a/>",
}


class RawServer(socketserver.BaseRequestHandler):
    """Gopher, and the ways in which an http server can misbehave."""

    def handle(self):
        line = self.request.recv(4096).split(b"\r\n")[0]
        if not line.startswith(b"GET "):
            self.request.sendall(b"gopher:" + line)
            return
        path = line.split()[1]
        if path == b"/hang":
            time.sleep(5)
        elif path == b"/drip":
            try:
                for byte in b"HTTP/1.1 200 OK\r\nX-Slow: " + b"x" * 20:
                    self.request.sendall(bytes([byte]))
                    time.sleep(0.25)
            except OSError:
                pass
        elif path.startswith(b"/hops/"):
            left = int(path[6:])
            target = "/hops/%d" % (left - 1) if left > 1 else "/longer"
            self.request.sendall(b"HTTP/1.1 302 Found\r\nContent-Length: 0\r\nLocation: "
                                 + target.encode() + b"\r\nConnection: close\r\n\r\n")
        elif path == b"/endless":
            self.request.sendall(b"HTTP/1.1 200 OK\r\n\r\n")
            try:
                while True:
                    self.request.sendall(b"x" * 100)
                    time.sleep(0.05)
            except OSError:
                pass
        else:
            self.request.sendall(RAW_ANSWERS[path])


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def end_with_parent():
    """Run in a new server, which is to stop even when this script is killed."""
    parent_death_signal = 1
    ctypes.CDLL(None).prctl(parent_death_signal, signal.SIGTERM)


def wait_for(port, process):
    for _ in range(200):
        if process.poll() is not None:
            raise RuntimeError("the server on port %d has ended" % port)
        try:
            socket.create_connection(("127.0.0.1", port), 1).close()
            return
        except OSError:
            time.sleep(0.05)
    raise RuntimeError("no server on port %d" % port)


class Servers(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.processes = []
        cls.dir = tempfile.mkdtemp(prefix="kelmora-url-")
        cls.addClassCleanup(cls.stop)
        os.mkdir(cls.dir + "/www")
        os.chmod(cls.dir, 0o755)
        cls.write("www/a.xml", b"<a/>")
        cls.write("www/a b.xml", b"<blank/>")
        cls.write("www/big", bytes(range(256)) * 8192)
        cls.write("users", b"ann:{PLAIN}secret\n")
        subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2",
                        "-subj", "/CN=localhost", "-addext", "subjectAltName=DNS:localhost",
                        "-keyout", cls.dir + "/key.pem", "-out", cls.dir + "/cert.pem"],
                       check=True, stderr=subprocess.DEVNULL)
        cls.http, cls.https, cls.ftp = free_port(), free_port(), free_port()
        user = "user root;\n" if os.geteuid() == 0 else ""
        cls.write("nginx.conf", (user + NGINX_CONF.format(
            dir=cls.dir, http=cls.http, https=cls.https)).encode())
        cls.start(cls.http, ["nginx", "-c", cls.dir + "/nginx.conf", "-e", cls.dir + "/error.log"])
        cls.start(cls.ftp, [FTP_PYTHON, "-c", FTP_SERVER, cls.dir + "/www", str(cls.ftp)])
        socketserver.ThreadingTCPServer.daemon_threads = True
        cls.raw_server = socketserver.ThreadingTCPServer(("127.0.0.1", 0), RawServer)
        cls.raw = cls.raw_server.server_address[1]
        threading.Thread(target=cls.raw_server.serve_forever, daemon=True).start()

    @classmethod
    def start(cls, port, command):
        cls.processes.append(subprocess.Popen(command, stderr=subprocess.DEVNULL,
                                              preexec_fn=end_with_parent))
        wait_for(port, cls.processes[-1])

    @classmethod
    def stop(cls):
        for process in cls.processes:
            process.terminate()
        for process in cls.processes:
            process.wait()
        if hasattr(cls, "raw_server"):
            cls.raw_server.shutdown()
            cls.raw_server.server_close()
        shutil.rmtree(cls.dir, ignore_errors=True)

    @classmethod
    def write(cls, name, data):
        with open(os.path.join(cls.dir, name), "wb") as file:
            file.write(data)

    def read(self, name):
        with open(os.path.join(self.dir, name), "rb") as file:
            return file.read()

    def run_loader(self, *arguments):
        """Rows of (outcome, size, user, bytes), one for each transfer."""
        names = dict(dir=self.dir, http="127.0.0.1:%d" % self.http, raw="127.0.0.1:%d" % self.raw,
                     https="localhost:%d" % self.https, ftp="127.0.0.1:%d" % self.ftp)
        environment = {k: v for k, v in os.environ.items() if not k.lower().endswith("_proxy")}
        output = subprocess.run([URLFETCH] + [a.format(**names) for a in arguments], check=True,
                                stdout=subprocess.PIPE, env=environment, timeout=60).stdout
        rows = [line.split(" ") for line in output.decode().splitlines()]
        return [(r[0] == "true", int(r[1]), r[2], bytes.fromhex(r[3])) for r in rows]

    def check(self, rows):
        """Rows of arguments for one transfer, outcome, bytes or None where there is no buffer."""
        for arguments, outcome, data in rows:
            with self.subTest(arguments=arguments):
                got = self.run_loader(*arguments)[-1]
                self.assertEqual((got[0], got[3] if got[1] >= 0 else None), (outcome, data))

    def test_fetch(self):
        self.check([
            (["fetch", "HTTP://{http}/a.xml"], True, b"<a/>"),
            (["fetch", "http://{http}/x/..\\a b.xml#part"], True, b"<blank/>"),
            (["fetch", "http://{http}/missing"], False, None),
            (["fetch", "http://{http}/error"], False, b"broken"),
            (["fetch", "http://{http}/moved"], True, b"<a/>"),
            (["fetch", "http://{http}/loop"], False, None),
            (["fetch", "http://{raw}/hops/10"], True, b"<a/>"),
            (["fetch", "http://{raw}/hops/11"], False, None),
            (["fetch", "http://{http}/tofile"], False, None),
            (["fetch", "http://{http}/headers"], True, b"Kelmora|no-cache|no-cache|"),
            (["cache", "header", "X-A: 1", "fetch", "http://{http}/headers"], True,
             b"Kelmora|||1"),
            (["fetch", "http://127.0.0.1:1/a.xml"], False, None),
            (["fetch", "http://{http}x/a.xml"], False, None),
            (["fetch", "other://{http}/a.xml"], False, None),
            (["fetch", "gopher://{raw}/0/sel"], True, b"gopher:/sel"),
            (["fetch", "file://{dir}/www/a%20b.xml"], True, b"<blank/>"),
            (["fetch", "file://localhost{dir}/www/a.xml"], True, b"<a/>"),
            (["fetch", "file://elsewhere{dir}/www/a.xml"], False, None),
            (["fetch", "file://{dir}/www"], False, None),
            (["fetch", "file:///dev/zero"], False, None),
        ])
        self.assertEqual(self.run_loader("fetch", "http://{http}/big")[0][:2], (True, 1 << 21))

    def test_https(self):
        trust = ["trust", self.dir + "/cert.pem"]
        self.check([
            (["fetch", "https://{https}/a.xml"], False, None),
            (["fetch", "http://{http}/secure"], False, None),
            (trust + ["fetch", "https://{https}/a.xml"], True, b"<a/>"),
            (trust + ["fetch", "http://{http}/secure"], True, b"<a/>"),
            (trust + ["fetch", "https://127.0.0.1:%d/a.xml" % self.https], False, None),
        ])

    def test_login(self):
        page = "http://{http}/login/a.xml"
        with_login = page.replace("://", "://ann:s%65cret@")
        self.check([
            (["fetch", page], False, None),
            (["login", "ann", "wrong", "fetch", page], False, None),
            (["login", "ann", "secret", "fetch", page], True, b"<a/>"),
            (["fetch", with_login], True, b"<a/>"),
            (["fetch", with_login, "fetch", page], True, b"<a/>"),
            (["login", "ann", "wrong", "fetch", page, "login", "", "", "fetch", page], False, None),
        ])
        self.assertEqual([row[2] for row in self.run_loader("fetch", with_login, "fetch", page)],
                         ["ann", "ann"])

    def test_bounds(self):
        begin = time.monotonic()
        self.check([
            (["limit", "stall", "1", "fetch", "http://{raw}/hang"], False, None),
            (["limit", "stall", "1", "fetch", "gopher://{raw}/0GET%20/hang%20"], False, None),
            (["limit", "total", "1", "fetch", "http://{raw}/endless"], False, None),
            (["limit", "total", "1", "fetch", "http://{http}/slow/big"], False, None),
            (["limit", "body", "5000", "fetch", "http://{raw}/endless"], False, None),
            (["limit", "body", "5000", "fetch", "http://{http}/big"], False, None),
            (["limit", "body", "5000", "fetch", "file://{dir}/www/big"], False, None),
            (["fetch", "http://{raw}/short"], False, None),
            (["fetch", "http://{raw}/garbage"], False, None),
            (["fetch", "http://{raw}/nothing"], False, None),
            (["fetch", "http://{raw}/chunk"], False, None),
            (["fetch", "http://{raw}/badchunk"], False, None),
            (["fetch", "http://{raw}/longer"], True, b"<a/>"),  # the rest is no part of the answer
            (["fetch", "http://{raw}/negative"], False, None),
            (["fetch", "http://{raw}/huge"], False, None),
            (["fetch", "http://{raw}/longline"], False, None),
            (["limit", "stall", "1", "fetch", "http://{raw}/drip"], False, None),
            (["limit", "total", "1", "fetch", "http://{raw}/drip"], False, None),
            (["fetch", "https://{raw}/a.xml"], False, None),
        ])
        self.assertLess(time.monotonic() - begin, 30)

    def test_send(self):
        data = self.dir + "/www/big"
        self.check([
            (["send", "PUT", "http://{http}/dav/new.xml", data], True, b""),
            (["send", "PUT", "http://{http}/dav/empty.xml", "/dev/null"], True, b""),
            (["send", "PUT", "http://ann:secret@{http}/login/x", data], False, None),
            (["send", "PUT", "http://{http}/error", data], False, b"broken"),
            (["send", "PUT", "http://{http}/moved", data], False, None),
            (["send", "PUT", "gopher://{raw}/0/x", data], False, None),
            (["send", "PUT", "file://{dir}/out%20put", data], True, None),
            (["send", "PUT", "file://{dir}/missing/x", data], False, None),
        ])
        self.assertEqual(self.read("www/dav/new.xml"), self.read("www/big"))
        self.assertEqual(self.read("www/dav/empty.xml"), b"")
        self.assertEqual(self.read("out put"), self.read("www/big"))

    def test_ftp(self):
        ann = "ftp://ann:secret@{ftp}/"
        self.check([
            (["fetch", "ftp://{ftp}/a.xml"], True, b"<a/>"),
            (["fetch", ann + "a%20b.xml"], True, b"<blank/>"),
            (["fetch", "ftp://ann:wrong@{ftp}/a.xml"], False, None),
            (["fetch", ann + "missing"], False, None),
            (["fetch", ann], False, None),
            (["send", "PUT", ann + "sent.xml", self.dir + "/www/big"], True, b""),
            (["send", "PUT", "ftp://{ftp}/refused.xml", self.dir + "/www/big"], False, None),
        ])
        self.assertEqual(self.read("www/sent.xml"), self.read("www/big"))


def python_with_ftp_server():
    for python in (sys.executable, "/usr/bin/python3"):
        probe = [python, "-c", "import pyftpdlib"]
        if not shutil.which(python):
            continue
        if subprocess.run(probe, stderr=subprocess.DEVNULL).returncode == 0:
            return python
    return None


if __name__ == "__main__":
    URLFETCH = sys.argv.pop(1)
    os.environ["PATH"] += ":/usr/sbin"
    FTP_PYTHON = python_with_ftp_server()
    if not FTP_PYTHON or not shutil.which("nginx") or not shutil.which("openssl"):
        print("skipped: nginx, openssl or pyftpdlib is missing")
        sys.exit(SKIPPED)
    unittest.main()
