#!/usr/bin/env python3
"""Recomputes `tarvik agents cost --period 30d` from the logs, without Tarvik's code.

Reads the same folders by the same rules (Claude Code: message.usage, "<synthetic>" dropped,
repeats by message id + request id counted once across all files; Codex: growth of the running
totals per file; files changed before the period are not opened) with Python's json module, and
compares the per-day tokens (exactly) and cost (1e-6 relative) of Tarvik's --json output, plus
the per-model lines and the totals.

It also reads Codex logs the way ccusage does (see codex_records) and prices the events the way
ccusage does (list prices of LiteLLM, Sonnet 4.5's higher
rate above 200k tokens of a kind per request, 1-hour cache writes at twice the input price in
20.x, Codex files without a model taken as gpt-5) and splits every day by agent, so the
comparison with ccusage can show where each dollar of difference comes from.

usage: spend_check.py --home HOME --tz ZONE --tarvik TARVIK.json [--out SUMMARY.json]
       (CLAUDE_CONFIG_DIR and CODEX_HOME are read from the environment, as Tarvik does)
"""

import argparse
import datetime as dt
import json
import math
import os
import re
import sys
import time
from zoneinfo import ZoneInfo

# USD per million tokens: input, output, cache write, cache read.
CLAUDE_PRICES = [
    (("opus-4-5",), (5.00, 25.00, 6.25, 0.50)),
    (("opus-4", "3-opus"), (15.00, 75.00, 18.75, 1.50)),
    (("sonnet-4", "3-7-sonnet", "3-5-sonnet"), (3.00, 15.00, 3.75, 0.30)),
    (("haiku-4-5",), (1.00, 5.00, 1.25, 0.10)),
    (("3-5-haiku",), (0.80, 4.00, 1.00, 0.08)),
    (("3-haiku",), (0.25, 1.25, 0.30, 0.03)),
]
# ccusage (LiteLLM) prices Sonnet 4.5's tokens of a kind beyond 200k in one request higher:
# input, output, cache write, cache read rates times these.
TIER_ABOVE_200K = (2.0, 1.5, 2.0, 2.0)
GPT_PRICES = [
    (("gpt-5", "gpt-5-codex", "gpt-5.1", "gpt-5.1-codex"), (1.25, 10.00, 0.0, 0.125)),
    (("gpt-5-mini", "gpt-5.1-codex-mini"), (0.25, 2.00, 0.0, 0.025)),
    (("gpt-5-nano",), (0.05, 0.40, 0.0, 0.005)),
]


def price(model):
    name = model.strip().lower()
    for names, p in CLAUDE_PRICES:
        if any(n in name for n in names):
            return p
    for names, p in GPT_PRICES:
        if name in names:
            return p
    return None


def token_count(v):
    """A whole number >= 0 from a JSON number or numeric string; 0 when missing or odd."""
    if isinstance(v, bool):
        return 0
    if isinstance(v, str):
        try:
            v = float(v.strip())
        except ValueError:
            return 0
    if not isinstance(v, (int, float)):
        return 0
    if not math.isfinite(v) or v <= 0 or v > 1e15:
        return 0
    return int(math.floor(v + 0.5))


ISO_DAY = re.compile(r"^\d{4}-\d{2}-\d{2}$")


def parse_date(v, tz):
    """Epoch seconds of an ISO 8601 text (zone suffix, or local time without one) or number."""
    if isinstance(v, bool):
        return None
    if isinstance(v, (int, float)):
        return float(v)
    if not isinstance(v, str):
        return None
    text = v.strip()
    if ISO_DAY.match(text):  # a bare date is midnight UTC
        try:
            d = dt.datetime.fromisoformat(text).replace(tzinfo=dt.timezone.utc)
        except ValueError:
            return None
        return d.timestamp()
    if len(text) < 16 or text[10] != "T":
        return None
    # Fractions beyond milliseconds are cut, as Tarvik does.
    text = re.sub(r"\.(\d{3})\d+", r".\1", text)
    try:
        d = dt.datetime.fromisoformat(text.replace("Z", "+00:00"))
    except ValueError:
        return None
    if d.tzinfo is None:
        d = d.replace(tzinfo=tz)
    return d.timestamp()


def lines_of(path):
    with open(path, "rb") as f:
        data = f.read()
    for line in data.split(b"\n"):
        if line.endswith(b"\r"):
            line = line[:-1]
        yield line


def log_files(folder):
    """Every *.jsonl regular file below folder, with its modification time."""
    out = []
    for root, dirs, files in os.walk(folder):
        dirs.sort()
        for name in sorted(files):
            if not name.endswith(".jsonl"):
                continue
            p = os.path.join(root, name)
            if os.path.isfile(p):
                out.append((p, os.stat(p).st_mtime))
    return out


def claude_records(path, tz):
    """Usage lines of one Claude Code log: (dedup key or None, epoch, model, tokens, extra)."""
    for line in lines_of(path):
        if b'"usage"' not in line:
            continue
        try:
            root = json.loads(line)
        except ValueError:
            continue
        if not isinstance(root, dict):
            continue
        msg = root.get("message")
        if not isinstance(msg, dict) or not isinstance(msg.get("usage"), dict):
            continue
        usage = msg["usage"]
        model = msg.get("model") if isinstance(msg.get("model"), str) else ""
        model = model or "unknown"
        if model == "<synthetic>":
            continue
        when = parse_date(root.get("timestamp"), tz)
        if when is None:
            continue
        tokens = (token_count(usage.get("input_tokens")), token_count(usage.get("output_tokens")),
                  token_count(usage.get("cache_creation_input_tokens")),
                  token_count(usage.get("cache_read_input_tokens")))
        mid = msg.get("id") if isinstance(msg.get("id"), str) else ""
        req = root.get("requestId") if isinstance(root.get("requestId"), str) else ""
        key = f"{mid}:{req}" if mid else None
        split = usage.get("cache_creation")
        hour = token_count(split.get("ephemeral_1h_input_tokens")) if isinstance(split, dict) else 0
        yield key, when, model, tokens, hour


def codex_records(path, tz):
    """Usage events of one Codex rollout: (None, epoch, model, tokens, legacy, ccusage's tokens).

    ccusage's reading is kept beside Tarvik's: it takes "last_token_usage" whenever the totals
    moved, and the growth of the totals (never below zero) otherwise. Either may be None.
    """
    model, previous, cc_previous = "unknown", None, None
    for line in lines_of(path):
        if (b'"token_count"' not in line and b'"turn_context"' not in line
                and b'"session_meta"' not in line):
            continue
        try:
            root = json.loads(line)
        except ValueError:
            root = {}
        if not isinstance(root, dict):
            root = {}
        payload = root.get("payload") if isinstance(root.get("payload"), dict) else {}
        kind = root.get("type")
        if kind in ("turn_context", "session_meta"):
            m = payload.get("model")
            if isinstance(m, str) and m:
                model = m
            continue
        if payload.get("type") != "token_count":
            continue
        info = payload.get("info") if isinstance(payload.get("info"), dict) else {}
        totals = info.get("total_token_usage")
        when = parse_date(root.get("timestamp"), tz)
        ours = None
        if isinstance(totals, dict):
            now = (token_count(totals.get("input_tokens")),
                   token_count(totals.get("cached_input_tokens")),
                   token_count(totals.get("output_tokens")))
            before = previous or (0, 0, 0)
            if any(n < b for n, b in zip(now, before)):
                before = (0, 0, 0)  # Codex started counting afresh
            previous = now
            d_in, d_cached, d_out = (n - b for n, b in zip(now, before))
            if d_in + d_out >= 1:
                ours = (max(d_in - d_cached, 0), d_out, 0, d_cached)
        theirs = None
        fields = ("input_tokens", "cached_input_tokens", "output_tokens",
                  "reasoning_output_tokens", "total_tokens")
        total = tuple(token_count(totals.get(k)) for k in fields) if isinstance(totals,
                                                                                 dict) else None
        last = info.get("last_token_usage")
        raw = None
        if isinstance(last, dict) and (total is None or total != cc_previous):
            raw = tuple(token_count(last.get(k)) for k in fields)
        elif total is not None:
            raw = tuple(max(n - b, 0) for n, b in zip(total, cc_previous or (0,) * 5))
        if total is not None:
            cc_previous = total
        if raw is not None and any(raw[:4]):
            theirs = (max(raw[0] - raw[1], 0), raw[2], 0, raw[1])
        if when is None or (ours is None and theirs is None):
            continue
        yield None, when, model, ours, model == "unknown", theirs


def cost(p, t):
    return (t[0] * p[0] + t[1] * p[1] + t[2] * p[2] + t[3] * p[3]) / 1e6


def ccusage_cost(model, t, hour, legacy, version):
    """The same event priced as ccusage prices it (see the header)."""
    if legacy:
        model = "gpt-5"
    p = price(model)
    if p is None:
        return 0.0
    tiered = "sonnet-4-5" in model

    def part(n, rate, above):
        if tiered and n > 200_000:
            return 200_000 * rate + (n - 200_000) * rate * above
        return n * rate

    five = t[2] - hour if version >= 20 else t[2]
    one_hour = hour if version >= 20 else 0
    return (sum(part(n, rate, above) for n, rate, above in
                zip((t[0], t[1], five, t[3]), p, TIER_ABOVE_200K))
            + one_hour * p[0] * 2) / 1e6


def ccusage_extras(model, t, hour, legacy):
    """What each of ccusage 20's pricing differences adds to Tarvik's price of one event."""
    tier = hour_extra = fallback = 0.0
    if legacy:
        fallback = cost(price("gpt-5"), t)
    p = price(model)
    if p and "sonnet-4-5" in model:
        tier = sum(max(n - 200_000, 0) * rate * (above - 1)
                   for n, rate, above in zip(t, p, TIER_ABOVE_200K)) / 1e6
    if p:
        hour_extra = hour * (2 * p[0] - p[2]) / 1e6
    return tier, hour_extra, fallback


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--home", required=True)
    ap.add_argument("--tz", required=True, help="the zone Tarvik ran in, e.g. Etc/UTC")
    ap.add_argument("--tarvik", required=True)
    ap.add_argument("--out")
    a = ap.parse_args()
    started = time.time()
    tz = ZoneInfo(a.tz)
    now = time.time()
    today = dt.datetime.fromtimestamp(now, tz).date()
    first = today - dt.timedelta(days=29)
    since = dt.datetime.combine(first, dt.time(), tz).timestamp()
    end = now + 1

    claude_dirs, seen_real = [], set()
    config = os.environ.get("CLAUDE_CONFIG_DIR")
    for base in ([config] if config else []) + [os.path.join(a.home, ".claude"),
                                                  os.path.join(a.home, ".config", "claude")]:
        folder = os.path.join(base, "projects")
        real = os.path.realpath(folder)
        if real not in seen_real:
            seen_real.add(real)
            claude_dirs.append(folder)
    codex_dir = os.path.join(os.environ.get("CODEX_HOME") or os.path.join(a.home, ".codex"),
                             "sessions")

    days = {first + dt.timedelta(days=i): {} for i in range(30)}
    per_model = {}
    files = {"claude": [0, 0], "codex": [0, 0]}  # opened, passed over by time stamp
    seen = set()
    counted = {"claude_lines": 0, "claude_repeats": 0, "codex_events": 0}

    def add(agent, when, model, t, hour, legacy, cc):
        """Counts one event: t by Tarvik's rules, cc by ccusage's (either may be None)."""
        if not (since <= when < end):
            return
        day = dt.datetime.fromtimestamp(when, tz).date()
        if day not in days:
            return
        slot = days[day].setdefault(agent, {"tokens": 0, "cost": 0.0, "input": 0, "output": 0,
                                            "cacheWrite": 0, "cacheRead": 0, "ccusage20": 0.0,
                                            "ccusage18": 0.0, "unpriced": 0, "tierExtra": 0.0,
                                            "hourExtra": 0.0, "fallbackExtra": 0.0,
                                            "hourTokens": 0, "fallbackTokens": 0,
                                            "ccTokens": 0, "restartTokens": 0,
                                            "restartExtra": 0.0})
        none = (0, 0, 0, 0)
        if cc is not None:
            slot["ccTokens"] += sum(cc)
            slot["ccusage20"] += ccusage_cost(model, cc, hour, legacy, 20)
            slot["ccusage18"] += ccusage_cost(model, cc, hour, legacy, 18)
        if cc != t:  # ccusage read a Codex restart that the totals alone do not show
            slot["restartTokens"] += sum(cc or none) - sum(t or none)
            slot["restartExtra"] += (ccusage_cost(model, cc or none, hour, legacy, 20)
                                     - ccusage_cost(model, t or none, hour, legacy, 20))
        if t is None:
            return
        p = price(model)
        c = cost(p, t) if p else 0.0
        slot["tokens"] += sum(t)
        slot["cost"] += c
        for k, v in zip(("input", "output", "cacheWrite", "cacheRead"), t):
            slot[k] += v
        tier, hour_extra, fallback = ccusage_extras(model, t, hour, legacy)
        slot["tierExtra"] += tier
        slot["hourExtra"] += hour_extra
        slot["fallbackExtra"] += fallback
        slot["hourTokens"] += hour
        slot["fallbackTokens"] += sum(t) if legacy else 0
        if p is None:
            slot["unpriced"] += sum(t)
        m = per_model.setdefault(model, [0, 0, 0, 0])
        for i in range(4):
            m[i] += t[i]

    # Every file is read once for the all-time figures; only those changed in the period
    # count for Tarvik's.
    # local day -> tokens by ccusage's reading, over all files and days
    all_time = {"claude": {}, "codex": {}}
    all_seen = set()

    def add_all(agent, when, t):
        day = dt.datetime.fromtimestamp(when, tz).date().isoformat()
        all_time[agent][day] = all_time[agent].get(day, 0) + sum(t)

    for folder in claude_dirs:
        for path, mtime in log_files(folder):
            recent = mtime >= since
            files["claude"][0 if recent else 1] += 1
            for key, when, model, t, hour in claude_records(path, tz):
                if key is None or key not in all_seen:
                    if key is not None:
                        all_seen.add(key)
                    add_all("claude", when, t)  # ccusage reads these lines as Tarvik does
                if not recent:
                    continue
                counted["claude_lines"] += 1
                if key is not None:
                    if key in seen:
                        counted["claude_repeats"] += 1
                        continue
                    seen.add(key)
                add("claude", when, model, t, hour, False, t)
    for path, mtime in log_files(codex_dir):
        recent = mtime >= since
        files["codex"][0 if recent else 1] += 1
        for _, when, model, t, legacy, cc in codex_records(path, tz):
            if cc is not None:
                add_all("codex", when, cc)
            if recent:
                counted["codex_events"] += t is not None
                add("codex", when, model, t, 0, legacy, cc)

    # Compare with Tarvik.
    with open(a.tarvik) as f:
        tv = json.load(f)
    problems = []
    tdays = {d["day"]: d for d in tv["days"]}
    if sorted(tdays) != sorted(d.isoformat() for d in days):
        problems.append(f"days differ: tarvik {sorted(tdays)[:1]}..{sorted(tdays)[-1:]}")
    total_tokens, total_cost = 0, 0.0
    rows = []
    for day in sorted(days):
        tok = sum(s["tokens"] for s in days[day].values())
        cst = sum(s["cost"] for s in days[day].values())
        total_tokens += tok
        got = tdays.get(day.isoformat(), {"tokens": None, "cost": None})
        ok = got["tokens"] == tok and close(got["cost"], cst)
        if not ok:
            problems.append(f"{day}: tarvik {got['tokens']} tokens ${got['cost']}, "
                            f"recomputed {tok} tokens ${cst}")
        rows.append({"day": day.isoformat(), "tokens": tok, "cost": cst,
                     "tarvikTokens": got["tokens"], "tarvikCost": got["cost"], "equal": ok,
                     "agents": days[day]})
    models = {}
    for model, t in per_model.items():
        p = price(model)
        models[model] = {"tokens": sum(t), "cost": cost(p, t) if p else None}
        if p:
            total_cost += models[model]["cost"]
    tmodels = {m["model"]: m for m in tv["models"]}
    for model, m in models.items():
        got = tmodels.get(model)
        if (not got or got["tokens"] != m["tokens"]
                or (m["cost"] is None) != (got["cost"] is None)
                or (m["cost"] is not None and not close(got["cost"], m["cost"]))):
            problems.append(f"model {model}: tarvik {got}, recomputed {m}")
    for model in tmodels.keys() - models.keys():
        problems.append(f"model {model} only in Tarvik's output")
    if tv["totalTokens"] != total_tokens or not close(tv["totalCost"], total_cost):
        problems.append(f"totals: tarvik {tv['totalTokens']} ${tv['totalCost']}, "
                        f"recomputed {total_tokens} ${total_cost}")

    summary = {"tz": a.tz, "since": first.isoformat(), "files": files, "counted": counted,
               "totalTokens": total_tokens, "totalCost": total_cost, "models": models,
               "days": rows, "allTime": all_time, "problems": problems, "equal": not problems,
               "seconds": round(time.time() - started, 1)}
    if a.out:
        with open(a.out, "w") as f:
            json.dump(summary, f, indent=1, default=str)
    verdict = "EQUAL" if not problems else f"DIFFERENT ({len(problems)} problems)"
    print(f"[{a.tz}] {verdict}: 30 days from {first}, {total_tokens:,} tokens, "
          f"${total_cost:,.2f}; Claude files read {files['claude'][0]}, passed over "
          f"{files['claude'][1]}; Codex files read {files['codex'][0]}, passed over "
          f"{files['codex'][1]}; {counted['claude_repeats']:,} repeated Claude lines dropped "
          f"({summary['seconds']} s)")
    for p in problems[:20]:
        print("  " + p)
    return 0 if not problems else 1


def close(a, b):
    if a is None or b is None:
        return False
    return abs(a - b) <= 1e-6 * max(abs(a), abs(b), 1e-9)


if __name__ == "__main__":
    sys.exit(main())
