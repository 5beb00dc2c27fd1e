"""What listens where a hub should."""

import contextlib
import socket
import threading

from harness.hub import RPC_PORT
from harness.wait import PATIENCE


@contextlib.contextmanager
def giving_one_reply(network, reply):
    """Takes one message within the block, gives these bytes for it, and ends the connection."""

    def answer(listener):
        connection, _ = listener.accept()
        with connection:
            while (received := connection.recv(65536)) and not received.endswith(b"\0"):
                pass
            connection.sendall(reply)

    with network.run(socket.create_server, ("", RPC_PORT)) as listener:
        listener.settimeout(PATIENCE)
        thread = threading.Thread(target=answer, args=(listener,))
        thread.start()
        yield
        thread.join()
