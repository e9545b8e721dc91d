"""A port that passes connections on to another one, and ends each only once it has taken in all that
the client was sending.

A client of Wine whose send has to wait never returns from it when the server resets the connection
meanwhile, as 389 DS does over a request that is too large.
"""
import contextlib
import socket
import threading

CHUNK = 1 << 16


class Forwarder:
    def __init__(self, target):
        self.target = target
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.port = self.listener.getsockname()[1]
        threading.Thread(target=self.accept, daemon=True).start()

    def accept(self):
        while True:
            client, _ = self.listener.accept()
            threading.Thread(target=self.serve, args=(client,), daemon=True).start()

    def serve(self, client):
        with client, contextlib.suppress(OSError):
            with socket.create_connection(("127.0.0.1", self.target)) as server:
                for end in (client, server):
                    end.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
                answers = threading.Thread(target=pump, args=(server, client), daemon=True)
                answers.start()
                pump(client, server)
                answers.join()


def pump(source, target):
    """Passes on until the source ends; what the target no longer takes is dropped."""
    with contextlib.suppress(OSError):
        while data := source.recv(CHUNK):
            with contextlib.suppress(OSError):
                target.sendall(data)
    with contextlib.suppress(OSError):
        target.shutdown(socket.SHUT_WR)
