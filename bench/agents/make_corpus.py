#!/usr/bin/env python3
"""Writes a month of Claude Code and Codex session logs for the agent-spend benchmark.

The logs have the shapes those tools write: Claude Code project logs under
.claude/projects/<project>/<session>.jsonl (subagents in <session>/subagents/), Codex rollouts
under .codex/sessions/YYYY/MM/DD/. Most bytes are tool output, as in real logs; each Claude
answer is written once per content block with the same message id, request id and usage;
resumed sessions copy their parent's lines; Codex token_count lines carry running totals that
repeat, reset and sometimes have no "info". Every file's modification time is the time of its
last line; some sessions are older than 30 days and must be passed over.

Deterministic for a seed and a day: times are laid out backwards from today's local midnight.
--filler-scale scales the free text and data (tool output, thinking, images, reasoning) but not
the few giant lines: the same sessions and usage lines in longer or shorter files.

usage: make_corpus.py OUT_HOME [--seed N] [--filler-scale F] [--claude-sessions N] [--codex-sessions N]
"""

import argparse
import base64
import datetime as dt
import json
import os
import random
import shutil
import sys
import time

CLAUDE_MODELS = [  # (model, weight)
    ("claude-sonnet-4-5-20250929", 50),
    ("claude-opus-4-5-20251101", 22),
    ("claude-opus-4-1-20250805", 13),
    ("claude-haiku-4-5-20251001", 15),
]
CODEX_MODELS = [("gpt-5-codex", 60), ("gpt-5", 27), ("gpt-5-mini", 13)]
PROJECTS = ["tarvik", "webshop", "infra", "ml-pipeline", "dotfiles", "api-gateway", "mobile-app",
            "data-etl", "docs-site", "compiler", "game-engine", "billing"]
TOOLS = ["Bash", "Read", "Grep", "Edit", "Write", "Glob", "TodoWrite", "WebFetch"]
B62 = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
COMPACT = (",", ":")  # Claude Code and Codex write compact JSON


def dumps(obj):
    return json.dumps(obj, separators=COMPACT, ensure_ascii=False)


class Text:
    """Slices of a large, pre-escaped pool of tool-output-like text, cheap to cut anywhere."""

    def __init__(self, rnd, scale):
        self.scale = scale  # --filler-scale: every piece of free text or data, bar giant lines
        words = ("the of and to in is for on with as at by from this that def return if else "
                 "for while class import const let var fn pub struct impl self None True False "
                 "error warning info debug test build make cmake target link src include main "
                 "value index buffer size count total path file folder line column result "
                 "request response json token model cache read write usage session agent").split()
        extras = ["größe", "naïve", "→", "✓", "—", "日本語", "€", "│", "└──", "├──"]
        parts = []
        n = 0
        while n < 6_000_000:
            indent = " " * rnd.choice([0, 0, 2, 4, 4, 8])
            k = rnd.randint(3, 14)
            line = " ".join(rnd.choice(words) for _ in range(k))
            r = rnd.random()
            if r < 0.10:
                line += f' = "{rnd.choice(words)}"'
            elif r < 0.15:
                line = f"{rnd.randint(1, 9999):>5}\t{line}"
            elif r < 0.18:
                line += " " + rnd.choice(extras)
            elif r < 0.20:
                line += " \\ " + rnd.choice(words)
            s = indent + line + "\n"
            parts.append(s)
            n += len(s)
        self.pool = json.dumps("".join(parts), ensure_ascii=False)[1:-1]
        self.b64 = base64.b64encode(rnd.randbytes(3_000_000)).decode()

    def text(self, rnd, n, exact=False):
        """About n characters of escaped text, safe to put between JSON quotes."""
        pool = self.pool
        n = n if exact else int(n * self.scale)
        n = max(1, min(n, len(pool) - 2))
        start = int(rnd.random() * (len(pool) - n))  # one draw whatever n is: same stream
        while start > 0 and pool[start - 1] == "\\":
            start += 1
        piece = pool[start:start + n]
        tail = len(piece) - len(piece.rstrip("\\"))
        if tail % 2:
            piece = piece[:-1]
        return piece

    def base64(self, rnd, n, exact=False):
        n = n if exact else int(n * self.scale)
        n = max(1, min(n, len(self.b64)))
        start = int(rnd.random() * (len(self.b64) - n + 1))
        return self.b64[start:start + n]


def uid(rnd):
    h = f"{rnd.getrandbits(128):032x}"
    return f"{h[:8]}-{h[8:12]}-4{h[13:16]}-a{h[17:20]}-{h[20:32]}"


def b62(rnd, n):
    return "".join(rnd.choices(B62, k=n))


def iso(t):
    """Epoch seconds to Claude/Codex's ISO 8601 form with milliseconds, UTC."""
    ms = int(round(t * 1000))
    d = dt.datetime.fromtimestamp(ms // 1000, dt.timezone.utc)
    return d.strftime("%Y-%m-%dT%H:%M:%S") + f".{ms % 1000:03d}Z"


def weighted(rnd, pairs):
    return rnd.choices([p for p, _ in pairs], weights=[w for _, w in pairs])[0]


def lognorm_int(rnd, median, sigma, lo, hi):
    return int(max(lo, min(hi, rnd.lognormvariate(0, sigma) * median)))


BIG = "\u0000BIG\u0000"
BIG_JSON = json.dumps(BIG)  # how the placeholder looks inside dumps() output


def with_big(obj, pieces):
    """dumps(obj) with each placeholder string replaced, in order, by a pre-escaped piece."""
    s = dumps(obj)
    out = []
    for piece in pieces:
        i = s.index(BIG_JSON)
        out.append(s[:i])
        out.append('"' + piece + '"')
        s = s[i + len(BIG_JSON):]
    out.append(s)
    return "".join(out)


class Claude:
    """One Claude Code session log (or a subagent's), line by line."""

    def __init__(self, g, session_id, project, cwd, version, model, t, sidechain=None):
        self.g, self.rnd = g, g.rnd
        self.session_id, self.project, self.cwd = session_id, project, cwd
        self.version, self.model, self.t = version, model, t
        self.sidechain = sidechain  # agent id for subagent logs
        self.lines = []
        self.parent = None
        self.context = 0
        self.long_context = model.startswith("claude-sonnet-4-5") and self.rnd.random() < 0.12
        self.cache_1h = self.rnd.random() < 0.06

    def base(self, kind):
        d = {"parentUuid": self.parent, "isSidechain": self.sidechain is not None,
             "userType": "external", "cwd": self.cwd, "sessionId": self.session_id,
             "version": self.version, "gitBranch": "main"}
        if self.sidechain:
            d["agentId"] = self.sidechain
        d["type"] = kind
        return d

    def tick(self, lo, hi):
        self.t += self.rnd.uniform(lo, hi)
        return self.t

    def add(self, line, u):
        self.lines.append(line)
        self.parent = u

    def prompt(self, text_len):
        rnd = self.rnd
        u = uid(rnd)
        d = self.base("user")
        d["message"] = {"role": "user", "content": BIG}
        d.update({"uuid": u, "timestamp": iso(self.tick(5, 240)), "thinkingMetadata":
                  {"level": "high", "disabled": False, "triggers": []}})
        self.add(with_big(d, [self.g.text.text(rnd, text_len)]), u)

    def usage(self):
        rnd = self.rnd
        limit = 420_000 if self.long_context else 160_000
        if self.context == 0:
            write = rnd.randint(12_000, 32_000)
            read = 0
        else:
            write = lognorm_int(rnd, 900, 1.2, 0, 40_000)
            read = self.context
        self.context = read + write
        if self.context > limit:  # auto-compact: the next request starts small again
            self.context = rnd.randint(15_000, 30_000)
        out = lognorm_int(rnd, 260, 1.3, 1, 32_000)
        inp = rnd.choice([1, 2, 3, 4, 5, 6, 8, 10, 12]) if read else rnd.randint(3, 9_000)
        five, hour = (0, write) if self.cache_1h else (write, 0)
        return {"input_tokens": inp, "cache_creation_input_tokens": write,
                "cache_read_input_tokens": read,
                "cache_creation": {"ephemeral_5m_input_tokens": five,
                                   "ephemeral_1h_input_tokens": hour},
                "output_tokens": out, "service_tier": "standard"}

    def answer(self, with_tool):
        """One API response: one line per content block, all with the same id and usage."""
        rnd, text = self.rnd, self.g.text
        msg_id = "msg_01" + b62(rnd, 22)
        req_id = "req_011C" + b62(rnd, 21)
        usage = self.usage()
        blocks = []
        if rnd.random() < 0.55:
            blocks.append(("thinking", lognorm_int(rnd, 700, 0.9, 40, 12_000)))
        if rnd.random() < 0.7 or not with_tool:
            blocks.append(("text", lognorm_int(rnd, 350, 1.0, 10, 8_000)))
        tool = None
        if with_tool:
            tool = rnd.choice(TOOLS)
            blocks.append(("tool_use", tool))
        self.tick(2, 40)
        tool_id = None
        for kind, arg in blocks:
            u = uid(rnd)
            d = self.base("assistant")
            pieces = []
            if kind == "thinking":
                content = {"type": "thinking", "thinking": BIG, "signature": BIG}
                pieces = [text.text(rnd, arg), text.base64(rnd, rnd.randint(300, 1200))]
            elif kind == "text":
                content = {"type": "text", "text": BIG}
                pieces = [text.text(rnd, arg)]
            else:
                tool_id = "toolu_01" + b62(rnd, 22)
                if arg in ("Write", "Edit"):
                    inp = {"file_path": f"{self.cwd}/src/{b62(rnd, 8)}.cpp", "content": BIG}
                    pieces = [text.text(rnd, lognorm_int(rnd, 2500, 1.0, 50, 60_000))]
                elif arg == "Bash":
                    inp = {"command": "cmake --build build && ctest --output-on-failure",
                           "description": "Build and run the tests"}
                else:
                    inp = {"pattern": b62(rnd, 10), "path": self.cwd}
                content = {"type": "tool_use", "id": tool_id, "name": arg, "input": inp}
            d["message"] = {"model": self.model, "id": msg_id, "type": "message",
                            "role": "assistant", "content": [content], "stop_reason": None,
                            "stop_sequence": None, "usage": usage}
            d.update({"requestId": req_id, "uuid": u, "timestamp": iso(self.tick(0.05, 3))})
            self.add(with_big(d, pieces), u)
        return tool, tool_id

    def tool_result(self, tool, tool_id):
        """The tool's output, written twice in one line as Claude Code does (content + result)."""
        rnd, g = self.rnd, self.g
        u = uid(rnd)
        d = self.base("user")
        giant = rnd.random() < g.giant_chance
        if tool == "Read" and rnd.random() < 0.01:  # a screenshot, base64 in the log
            n = rnd.randint(80_000, 900_000) if not giant else rnd.randint(2_500_000, 3_000_000)
            d["message"] = {"role": "user", "content": [{"tool_use_id": tool_id, "type":
                            "tool_result", "content": [{"type": "image", "source": {
                                "type": "base64", "media_type": "image/png", "data": BIG}}]}]}
            d.update({"uuid": u, "timestamp": iso(self.tick(0.2, 8)),
                      "toolUseResult": {"type": "image", "file": {"base64": BIG,
                                                                   "type": "image/png"}}})
            data = g.text.base64(rnd, n, exact=giant)
            self.add(with_big(d, [data, data]), u)
            return
        if giant:  # an Edit of a generated file: the whole original file is kept in the log
            n = int(rnd.randint(3_000_000, 6_000_000) / 2)
        else:
            n = lognorm_int(rnd, g.filler_median, 1.25, 40, 2_000_000)
        body = g.text.text(rnd, n, exact=giant)
        d["message"] = {"role": "user", "content": [{"tool_use_id": tool_id, "type":
                                                     "tool_result", "content": BIG,
                                                     "is_error": False}]}
        d.update({"uuid": u, "timestamp": iso(self.tick(0.2, 30))})
        if tool == "Bash":
            d["toolUseResult"] = {"stdout": BIG, "stderr": "", "interrupted": False,
                                  "isImage": False}
        elif tool in ("Edit", "Write"):
            d["toolUseResult"] = {"filePath": f"{self.cwd}/src/x.cpp", "oldString": "",
                                  "newString": "", "originalFile": BIG,
                                  "structuredPatch": [], "userModified": False}
        else:
            d["toolUseResult"] = {"type": "text", "file": {"filePath": f"{self.cwd}/README.md",
                                                           "content": BIG, "numLines": 200,
                                                           "startLine": 1, "totalLines": 200}}
        self.add(with_big(d, [body, body]), u)

    def task_result(self, agent):
        """The parent's view of a finished subagent: its usage sits outside "message"."""
        rnd = self.rnd
        u = uid(rnd)
        d = self.base("user")
        d["message"] = {"role": "user", "content": [{"tool_use_id": "toolu_01" + b62(rnd, 22),
                                                     "type": "tool_result", "content": BIG}]}
        d.update({"uuid": u, "timestamp": iso(self.tick(1, 5)), "toolUseResult": {
            "status": "completed", "prompt": "Look through the code base", "agentId": agent,
            "content": [{"type": "text", "text": BIG}], "totalDurationMs": rnd.randint(5000, 90000),
            "totalTokens": rnd.randint(10_000, 90_000), "totalToolUseCount": rnd.randint(2, 30),
            "usage": {"input_tokens": 6, "cache_creation_input_tokens": 2_000,
                      "cache_read_input_tokens": 40_000, "output_tokens": 900,
                      "service_tier": "standard"}}})
        body = self.g.text.text(rnd, rnd.randint(500, 4000))
        self.add(with_big(d, [body, body]), u)

    def synthetic(self):
        """Claude Code's own notices: model "<synthetic>", no request id, zero usage."""
        rnd = self.rnd
        u = uid(rnd)
        d = self.base("assistant")
        d["message"] = {"id": uid(rnd), "container": None, "model": "<synthetic>",
                        "role": "assistant", "stop_reason": "stop_sequence", "stop_sequence": "",
                        "type": "message", "usage": {
                            "input_tokens": 0, "output_tokens": 0,
                            "cache_creation_input_tokens": 0, "cache_read_input_tokens": 0,
                            "server_tool_use": {"web_search_requests": 0,
                                                "web_fetch_requests": 0},
                            "service_tier": None,
                            "cache_creation": {"ephemeral_1h_input_tokens": 0,
                                               "ephemeral_5m_input_tokens": 0}},
                        "content": [{"type": "text", "text": rnd.choice([
                            "No response requested.",
                            "API Error: 529 {\"type\":\"error\",\"error\":{\"type\":"
                            "\"overloaded_error\",\"message\":\"Overloaded\"}}"])}]}
        d.update({"isApiErrorMessage": rnd.random() < 0.5, "uuid": u,
                  "timestamp": iso(self.tick(0.5, 20))})
        self.add(dumps(d), u)

    def other(self):
        rnd = self.rnd
        r = rnd.random()
        if r < 0.4:
            self.lines.append(dumps({"type": "file-history-snapshot", "messageId": uid(rnd),
                                     "snapshot": {"messageId": uid(rnd), "trackedFileBackups": {},
                                                  "timestamp": iso(self.t)},
                                     "isSnapshotUpdate": False}))
        elif r < 0.7:
            u = uid(rnd)
            d = self.base("system")
            d.update({"subtype": "compact_boundary", "content": "Conversation compacted",
                      "isMeta": False, "timestamp": iso(self.tick(0.1, 2)), "uuid": u,
                      "level": "info", "compactMetadata": {"trigger": "auto",
                                                           "preTokens": rnd.randint(150_000,
                                                                                    170_000)}})
            self.add(dumps(d), u)
        else:
            self.lines.append(dumps({"type": "summary", "summary": "Fix the build on Debian",
                                     "leafUuid": uid(rnd)}))


class Generator:
    def __init__(self, args):
        self.args = args
        self.rnd = random.Random(args.seed)
        self.text = Text(random.Random(args.seed + 1), args.filler_scale)
        self.filler_median = 2400
        self.giant_chance = 0.00012
        self.home = args.out
        midnight = dt.datetime.combine(dt.date.today(), dt.time())  # local
        self.anchor = midnight.timestamp()
        self.now = time.time()
        self.stats = {"files": 0, "bytes": 0, "lines": 0, "claude_files": 0, "subagent_files": 0,
                      "codex_files": 0, "old_files": 0, "resumed": 0, "truncated": 0,
                      "garbled": 0}

    def write(self, path, lines, mtime, old=False):
        os.makedirs(os.path.dirname(path), exist_ok=True)
        data = ("\n".join(lines) + "\n").encode()
        with open(path, "wb") as f:
            f.write(data)
        os.utime(path, (mtime, mtime))
        self.stats["files"] += 1
        self.stats["bytes"] += len(data)
        self.stats["lines"] += len(lines)
        if old:
            self.stats["old_files"] += 1

    def session_start(self, rnd, old):
        day = rnd.randint(31, 55) if old else rnd.randint(2, 26)
        hour = rnd.choice([7, 8, 9, 9, 10, 10, 11, 13, 14, 14, 15, 16, 17, 19, 21, 22, 23])
        return self.anchor - day * 86400 + hour * 3600 + rnd.uniform(0, 3600)

    # ---- Claude Code ------------------------------------------------------------------
    def claude_session(self, rnd, old, parent=None, start=None):
        project = rnd.choice(PROJECTS)
        cwd = f"/home/dev/src/{project}"
        folder = os.path.join(self.home, ".claude", "projects", "-home-dev-src-" + project)
        sid = uid(rnd)
        model = weighted(rnd, CLAUDE_MODELS)
        version = rnd.choice(["2.0.31", "2.0.36", "2.0.42", "2.0.46", "2.0.50"])
        t = start if start is not None else self.session_start(rnd, old)
        s = Claude(self, sid, project, cwd, version, model, t)
        if parent is not None:  # a resumed session copies its parent's lines under a new id
            project, cwd, folder, model = parent[1], parent[2], parent[3], parent[4]
            s.project, s.cwd, s.model = project, cwd, model
            for line in parent[0]:
                s.lines.append(line.replace(parent[5], sid))
            s.t = max(t, parent[6] + 600)
            self.stats["resumed"] += 1
        answers = lognorm_int(rnd, 30, 1.0, 2, 700)
        agents = []
        s.lines.append(dumps({"type": "file-history-snapshot", "messageId": uid(rnd),
                              "snapshot": {"messageId": uid(rnd), "trackedFileBackups": {},
                                           "timestamp": iso(s.t)}, "isSnapshotUpdate": False}))
        s.prompt(rnd.randint(40, 2000))
        for _ in range(answers):
            if rnd.random() < 0.03:
                s.tick(600, 3600)  # a break; the session goes on later
            tool, tool_id = s.answer(with_tool=rnd.random() < 0.82)
            if tool:
                s.tool_result(tool, tool_id)
            else:
                s.prompt(lognorm_int(rnd, 300, 1.0, 10, 6000))
            if rnd.random() < 0.006:
                s.synthetic()
            if rnd.random() < 0.02:
                s.other()
            if rnd.random() < 0.006 and not old:
                agent = f"{rnd.getrandbits(32):08x}"[:7]
                agents.append((agent, s.t))
                s.task_result(agent)
        if rnd.random() < 0.5:
            s.lines.append(dumps({"type": "summary", "summary": "Refactor the parser",
                                  "leafUuid": uid(rnd)}))
        copy = list(s.lines)
        lines = s.lines
        if rnd.random() < 0.01:  # the process died in the middle of a line
            cut = lines[-1]
            lines[-1] = cut[: max(1, len(cut) // 2)]
            self.stats["truncated"] += 1
        if rnd.random() < 0.004:  # a garbled line in the middle
            k = rnd.randrange(len(lines))
            lines.insert(k, lines[k][: len(lines[k]) // 3] + '","usage":{')
            self.stats["garbled"] += 1
        path = os.path.join(folder, sid + ".jsonl")
        self.write(path, lines, s.t, old)
        self.stats["claude_files"] += 1
        for agent, at in agents:
            self.subagent(rnd, folder, sid, cwd, version, agent, at)
        if s.t > self.now:
            self.stats["future_sessions"] = self.stats.get("future_sessions", 0) + 1  # should stay 0
        return (copy, project, cwd, folder, model, sid, s.t)

    def subagent(self, rnd, folder, sid, cwd, version, agent, at):
        model = rnd.choice(["claude-haiku-4-5-20251001", "claude-sonnet-4-5-20250929"])
        s = Claude(self, sid, "", cwd, version, model, at - rnd.uniform(60, 600), sidechain=agent)
        s.prompt(rnd.randint(200, 2000))
        for _ in range(lognorm_int(rnd, 14, 0.8, 2, 120)):
            tool, tool_id = s.answer(with_tool=rnd.random() < 0.9)
            if tool:
                s.tool_result(tool, tool_id)
        path = os.path.join(folder, sid, "subagents", f"agent-{agent}.jsonl")
        self.write(path, s.lines, s.t)
        self.stats["subagent_files"] += 1

    # ---- Codex ------------------------------------------------------------------------
    def codex_session(self, rnd, old):
        t = started = self.session_start(rnd, old)
        sid = uid(rnd)
        project = rnd.choice(PROJECTS)
        cwd = f"/home/dev/src/{project}"
        text = self.text
        model = weighted(rnd, CODEX_MODELS)
        legacy = rnd.random() < 0.03  # early Codex: no turn_context, so no model at all
        lines = []

        def line(kind, payload):
            nonlocal t
            t += rnd.uniform(0.05, 4)
            return {"timestamp": iso(t), "type": kind, "payload": payload}

        lines.append(dumps(line("session_meta", {
            "id": sid, "timestamp": iso(t), "cwd": cwd, "originator": "codex_cli_rs",
            "cli_version": rnd.choice(["0.46.0", "0.53.0", "0.58.0", "0.63.0"]),
            "instructions": None, "source": "cli", "model_provider": "openai",
            "git": {"commit_hash": f"{rnd.getrandbits(160):040x}", "branch": "main",
                    "repository_url": f"git@example.org:dev/{project}.git"}})))
        lines.append(with_big(line("response_item", {
            "type": "message", "role": "user",
            "content": [{"type": "input_text", "text": BIG}]}), [text.text(rnd, 900)]))
        totals = [0, 0, 0, 0]  # input, cached, output, reasoning
        context = rnd.randint(6_000, 12_000)
        rate = {"primary": {"used_percent": 3.0, "window_minutes": 299, "resets_in_seconds": 9000},
                "secondary": {"used_percent": 21.0, "window_minutes": 10079,
                              "resets_in_seconds": 400_000}}
        lines.append(dumps(line("event_msg", {"type": "token_count", "info": None,
                                              "rate_limits": rate})))
        turns = lognorm_int(rnd, 6, 0.9, 1, 120)
        for turn in range(turns):
            if rnd.random() < 0.08:
                t += rnd.uniform(600, 5400)
            if turn > 0 and rnd.random() < 0.07:
                model = weighted(rnd, CODEX_MODELS)  # /model mid-session
            if not legacy:
                lines.append(dumps(line("turn_context", {
                    "cwd": cwd, "approval_policy": "on-request",
                    "sandbox_policy": {"mode": "workspace-write", "network_access": False},
                    "model": model, "effort": rnd.choice(["medium", "high"]),
                    "summary": "auto"})))
            lines.append(with_big(line("event_msg", {"type": "user_message", "message": BIG,
                                                     "images": []}),
                                  [text.text(rnd, lognorm_int(rnd, 250, 1.0, 10, 5000))]))
            if turn > 0 and rnd.random() < 0.05:  # totals start again from zero
                totals = [0, 0, 0, 0]
                context = rnd.randint(8_000, 20_000)
            for _ in range(lognorm_int(rnd, 5, 0.8, 1, 60)):
                lines.append(with_big(line("response_item", {
                    "type": "reasoning", "summary": [{"type": "summary_text", "text": BIG}],
                    "content": None, "encrypted_content": BIG}),
                    [text.text(rnd, 200), text.base64(rnd, rnd.randint(800, 4_000))]))
                call = "call_" + b62(rnd, 24)
                lines.append(dumps(line("response_item", {
                    "type": "function_call", "name": "shell", "arguments": dumps(
                        {"command": ["bash", "-lc", "rg -n usage src | head -200"],
                         "workdir": cwd}), "call_id": call})))
                out = text.text(rnd, lognorm_int(rnd, self.filler_median, 1.2, 30, 1_500_000))
                lines.append(with_big(line("response_item", {
                    "type": "function_call_output", "call_id": call, "output": BIG}),
                    ['{\\"output\\":\\"' + out.replace("\\", "\\\\").replace('"', '\\"')
                     + '\\",\\"metadata\\":{\\"exit_code\\":0,\\"duration_seconds\\":0.2}}']))
                inp = context + rnd.randint(200, 6000)
                cached = int(inp * rnd.uniform(0.6, 0.97))
                outp = lognorm_int(rnd, 300, 1.1, 5, 20_000)
                reason = int(outp * rnd.uniform(0, 0.8))
                context = inp + outp
                if context > 240_000:
                    context = rnd.randint(10_000, 30_000)
                last = {"input_tokens": inp, "cached_input_tokens": cached,
                        "output_tokens": outp, "reasoning_output_tokens": reason,
                        "total_tokens": inp + outp}
                totals = [totals[0] + inp, totals[1] + cached, totals[2] + outp,
                          totals[3] + reason]
                total = {"input_tokens": totals[0], "cached_input_tokens": totals[1],
                         "output_tokens": totals[2], "reasoning_output_tokens": totals[3],
                         "total_tokens": totals[0] + totals[2]}
                rate["primary"]["used_percent"] = min(100.0, rate["primary"]["used_percent"] + 0.2)
                tc = {"type": "token_count", "info": {"total_token_usage": total,
                                                      "last_token_usage": last,
                                                      "model_context_window": 272000},
                      "rate_limits": rate}
                lines.append(dumps(line("event_msg", tc)))
                if rnd.random() < 0.35:  # Codex often writes the same totals twice
                    lines.append(dumps(line("event_msg", tc)))
                if rnd.random() < 0.05:
                    lines.append(dumps(line("event_msg", {"type": "token_count", "info": None,
                                                          "rate_limits": rate})))
            lines.append(with_big(line("event_msg", {"type": "agent_message", "message": BIG}),
                                  [text.text(rnd, lognorm_int(rnd, 600, 1.0, 20, 8000))]))
        if rnd.random() < 0.01:
            lines[-1] = lines[-1][: len(lines[-1]) // 2]
            self.stats["truncated"] += 1
        # Codex names the folder and file by the session's local start time.
        first = dt.datetime.fromtimestamp(started)
        folder = os.path.join(self.home, ".codex", "sessions", first.strftime("%Y/%m/%d"))
        path = os.path.join(folder, f"rollout-{first.strftime('%Y-%m-%dT%H-%M-%S')}-{sid}.jsonl")
        self.write(path, lines, t, old)
        self.stats["codex_files"] += 1

    def run(self):
        a, rnd = self.args, self.rnd
        recent = []
        for i in range(a.claude_sessions):
            old = i % 16 == 0
            parent = None
            if recent and not old and rnd.random() < 0.08:
                parent = rnd.choice(recent)
            # A few sessions run across the start of the 30-day window.
            start = None
            if i % 97 == 5:
                start = self.anchor - 29 * 86400 - rnd.uniform(600, 4 * 3600)
            info = self.claude_session(rnd, old, parent, start)
            if not old:
                recent.append(info)
                if len(recent) > 40:
                    recent.pop(0)
        for i in range(a.codex_sessions):
            self.codex_session(rnd, old=(i % 16 == 0))


def main():
    p = argparse.ArgumentParser()
    p.add_argument("out")
    p.add_argument("--seed", type=int, default=20261122)
    p.add_argument("--filler-scale", type=float, default=1.0)
    p.add_argument("--claude-sessions", type=int, default=1500)
    p.add_argument("--codex-sessions", type=int, default=650)
    args = p.parse_args()
    started = time.time()
    for sub in (".claude", ".codex"):
        shutil.rmtree(os.path.join(args.out, sub), ignore_errors=True)
    g = Generator(args)
    g.run()
    g.stats.update({"seed": args.seed, "filler_scale": args.filler_scale,
                    "day": dt.date.today().isoformat(), "seconds": round(time.time() - started, 1)})
    with open(os.path.join(args.out, "corpus.json"), "w") as f:
        json.dump(g.stats, f, indent=1)
    json.dump(g.stats, sys.stdout)
    print()


if __name__ == "__main__":
    main()
