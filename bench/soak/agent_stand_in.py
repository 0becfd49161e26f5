#!/usr/bin/env python3
"""A stand-in for the agents' usage services on 127.0.0.1, so a soak reads real answers without
the network: each known path answers with a plausible usage document, every request is counted,
and the server stops by itself after its lifetime.

usage: agent_stand_in.py PORT_FILE COUNTS_FILE LIFETIME_SECONDS
"""
import json
import sys
import threading
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

ANSWERS = {
    "/api/oauth/usage": {
        "five_hour": {"utilization": 42, "resets_at": "2099-01-01T00:00:00Z"},
        "seven_day": {"utilization": 7, "resets_at": "2099-01-05T00:00:00Z"},
    },
    "/backend-api/wham/usage": {
        "plan_type": "plus",
        "rate_limit": {"primary_window": {"used_percent": 12, "limit_window_seconds": 18000,
                                          "reset_after_seconds": 3600}},
    },
    "/copilot_internal/user": {
        "login": "soak", "copilot_plan": "free",
        "limited_user_quotas": {"chat": 40}, "monthly_quotas": {"chat": 50},
    },
    "/api/v1/key": {"data": {"label": "soak", "usage": 2, "limit": 10}},
    "/api/v1/credits": {"data": {"total_credits": 20, "total_usage": 2}},
}

counts = {}
lock = threading.Lock()


class Handler(BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def do_GET(self):
        path = self.path.split("?", 1)[0]
        with lock:
            counts[path] = counts.get(path, 0) + 1
        answer = ANSWERS.get(path)
        body = json.dumps(answer if answer is not None else {}).encode()
        self.send_response(200 if answer is not None else 404)
        self.send_header("Content-Type", "application/json")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *args):
        pass


def main():
    port_file, counts_file, lifetime = sys.argv[1], sys.argv[2], float(sys.argv[3])
    server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
    server.daemon_threads = True

    def save_counts():
        with lock:
            text = "".join(f"{path} {n}\n" for path, n in sorted(counts.items()))
        with open(counts_file, "w") as f:
            f.write(text)

    def keep_counting():
        while not stop.wait(10):
            save_counts()

    stop = threading.Event()
    threading.Thread(target=keep_counting, daemon=True).start()
    threading.Timer(lifetime, server.shutdown).start()
    with open(port_file, "w") as f:
        f.write(str(server.server_address[1]))
    server.serve_forever()
    stop.set()
    save_counts()


if __name__ == "__main__":
    main()
