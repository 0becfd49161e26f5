#!/usr/bin/env python3
"""Small logs, one case a day, on which Tarvik's rules and ccusage's give different tokens.

The generated corpus triggers none of these (its token totals agree); each case here isolates
one rule so the difference, where a real log has such lines, is known and measured.

usage: rule_probes.py HOME TARVIK CCUSAGE20 CCUSAGE18_JS   (HOME is emptied and rewritten)
"""

import datetime as dt
import json
import os
import shutil
import subprocess
import sys


def dumps(o):
    return json.dumps(o, separators=(",", ":"))


def write(path, rows):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w") as f:
        f.write("".join(dumps(r) + "\n" for r in rows))


def claude(day, hhmm, session, msg_id, req_id, model, usage):
    row = {"parentUuid": None, "isSidechain": False, "userType": "external", "cwd": "/w",
           "sessionId": session, "version": "2.0.46", "type": "assistant",
           "timestamp": f"{day}T{hhmm}:00.000Z",
           "message": {"id": msg_id, "type": "message", "role": "assistant", "model": model,
                       "content": [{"type": "text", "text": "ok"}],
                       "usage": dict({"input_tokens": 0, "output_tokens": 0,
                                      "cache_creation_input_tokens": 0,
                                      "cache_read_input_tokens": 0}, **usage)}}
    if req_id:
        row["requestId"] = req_id
    return row


def codex_count(day, hhmm, total, last):
    def u(t):
        return {"input_tokens": t[0], "cached_input_tokens": t[1], "output_tokens": t[2],
                "reasoning_output_tokens": 0, "total_tokens": t[0] + t[2]}
    return {"timestamp": f"{day}T{hhmm}:00.000Z", "type": "event_msg",
            "payload": {"type": "token_count", "info": {"total_token_usage": u(total),
                                                        "last_token_usage": u(last)}}}


def main():
    home, tarvik, cc20, cc18 = sys.argv[1:5]
    shutil.rmtree(home, ignore_errors=True)
    projects = os.path.join(home, ".claude", "projects", "-w")
    sessions = os.path.join(home, ".codex", "sessions", "2026", "01", "01")
    today = dt.date.today()
    days = [(today - dt.timedelta(days=k)).isoformat() for k in range(2, 8)]
    sonnet = "claude-sonnet-4-5-20250929"
    cases = []

    d = days[0]
    cases.append((d, "claude", "<synthetic> answer with usage (1,000 in, 200 out)"))
    write(f"{projects}/a.jsonl", [claude(d, "12:00", "sa", "5e0b1c2d-aaaa", None, "<synthetic>",
                                         {"input_tokens": 1000, "output_tokens": 200})])

    d = days[1]
    cases.append((d, "claude", "same message id without request id in two sessions"))
    for s, hhmm in (("sb1", "12:00"), ("sb2", "12:05")):
        write(f"{projects}/{s}.jsonl", [claude(d, hhmm, s, "msg_01gateway", None, sonnet,
                                                {"input_tokens": 1000, "output_tokens": 100})])

    d = days[2]
    cases.append((d, "claude", "one answer in 3 lines whose output_tokens grow 12, 12, 480"))
    write(f"{projects}/c.jsonl", [claude(d, f"12:0{i}", "sc", "msg_01stream", "req_011Cstream",
                                         sonnet, {"input_tokens": 3, "output_tokens": out,
                                                  "cache_read_input_tokens": 20000})
                                  for i, out in enumerate((12, 12, 480))])

    d = days[3]
    cases.append((d, "codex", "last_token_usage smaller than the growth of the totals"))
    write(f"{sessions}/rollout-d.jsonl", [
        {"timestamp": f"{d}T11:59:00.000Z", "type": "turn_context", "payload": {"model": "gpt-5"}},
        codex_count(d, "12:00", (10000, 4000, 500), (10000, 4000, 500)),
        codex_count(d, "12:01", (25000, 9000, 900), (12000, 5000, 300))])

    d = days[4]
    cases.append((d, "codex", "running totals where only cached input went down"))
    write(f"{sessions}/rollout-e.jsonl", [
        {"timestamp": f"{d}T11:59:00.000Z", "type": "turn_context", "payload": {"model": "gpt-5"}},
        codex_count(d, "12:00", (20000, 15000, 800), (20000, 15000, 800)),
        codex_count(d, "12:01", (26000, 2000, 1100), (6000, 2000, 300))])

    env = dict(os.environ, HOME=home, CLAUDE_CONFIG_DIR=os.path.join(home, ".claude"),
               CODEX_HOME=os.path.join(home, ".codex"))

    def run(*cmd):
        return json.loads(subprocess.run(cmd, env=env, check=True, capture_output=True,
                                         text=True).stdout)

    tv = {r["day"]: r["tokens"] for r in run(tarvik, "agents", "cost", "--period", "30d",
                                             "--json")["days"]}
    c20 = {"claude": {r["date"]: r["totalTokens"] for r in
                      run(cc20, "claude", "daily", "--json", "--offline")["daily"]},
           "codex": {r["date"]: r["totalTokens"] for r in
                     run(cc20, "codex", "daily", "--json", "--offline")["daily"]}}
    c18 = {r["date"]: r["totalTokens"] for r in
           run("node", cc18, "daily", "--json", "--offline")["daily"]}
    print("| case | Tarvik | ccusage 20 | ccusage 18 |")
    print("|---|---:|---:|---:|")
    for day, agent, what in cases:
        old = f"{c18.get(day, 0):,}" if agent == "claude" else "(no Codex)"
        print(f"| {what} | {tv.get(day, 0):,} | {c20[agent].get(day, 0):,} | {old} |")


if __name__ == "__main__":
    main()
