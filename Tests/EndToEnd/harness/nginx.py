"""nginx with the configuration of Examples/nginx-images.conf, in the network of a hub."""

import shlex
import socket
import ssl
import subprocess

from harness.http import HttpConnection
from harness.wait import wait_until

PORT = 443

# What Debian's nginx.conf has around the files of conf.d, for one process that writes nothing outside of its folder.
AROUND = """
daemon off; master_process off; pid nginx.pid;
events { worker_connections 256; }
http {
  access_log off;
  client_body_temp_path t; proxy_temp_path t; fastcgi_temp_path t; uwsgi_temp_path t; scgi_temp_path t;
  include images.conf;
}
"""


class Nginx:
    """Runs until close(); `certificate_command` makes the certificate and the key at the places that the configuration
    names, for which files of the folder stand in."""

    def __init__(self, folder, network, configuration, certificate_command):
        self.folder, self.network = folder, network
        self._connections = []
        files = {"/etc/ssl/certs/camera-hub.pem": folder / "certificate.pem",
                 "/etc/ssl/private/camera-hub.key": folder / "key.pem"}
        for name, file in files.items():
            assert configuration.count(name) == certificate_command.count(name) == 1
            configuration = configuration.replace(name, str(file))
            certificate_command = certificate_command.replace(name, str(file))
        subprocess.run(shlex.split(certificate_command), check=True, capture_output=True)
        self._tls = ssl.create_default_context(cafile=str(folder / "certificate.pem"))
        self._tls.check_hostname = False  # the command names the host that is to be served
        (folder / "images.conf").write_text(configuration, encoding="utf-8")
        (folder / "nginx.conf").write_text(AROUND, encoding="ascii")
        command = ["setpriv", "--pdeathsig", "KILL", "nginx", "-p", folder, "-c", folder / "nginx.conf", "-e", "stderr"]
        self._process = network.run(subprocess.Popen, command, stdin=subprocess.DEVNULL)
        wait_until(self._answers, "nginx answers")

    def _answers(self):
        assert self._process.poll() is None, "nginx has ended"
        try:
            self.network.connect(PORT).close()
        except ConnectionRefusedError:
            return False
        return True

    def connect(self, encrypted=True):
        plain = self.network.connect(PORT)
        plain.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        connection = HttpConnection(self._tls.wrap_socket(plain) if encrypted else plain)
        self._connections.append(connection)
        return connection

    def status(self, request):
        """The status of the reply to these bytes on a connection of their own."""
        connection = self.connect()
        connection.send(request)
        line = connection.receive_through(b"\r\n")
        connection.close()
        return int(line.split()[1])

    def close(self):
        for connection in self._connections:
            connection.close()
        self._process.kill()
        self._process.wait()
