#!/usr/bin/env python3
"""Sets ccusage's daily totals beside Tarvik's and accounts for every difference.

Input: the summary spend_check.py wrote (Tarvik's figures, recomputed and checked, split by
agent, with the logs also read and priced as ccusage reads and prices them, and the all-time
token counts) and
the --json output of `ccusage claude daily`, `ccusage codex daily` (20.x) and `ccusage daily`
(18.x, Claude Code only). A difference counts as explained when the recomputation under the
named rule gives ccusage's figure for every day (tokens exactly, dollars to 1e-6 relative).

usage: compare_ccusage.py SUMMARY.json C20_CLAUDE.json C20_CODEX.json C18.json [--out OUT.json]
"""

import argparse
import json
import sys


def by_date(path, cost_key):
    with open(path) as f:
        data = json.load(f)
    return {d["date"]: (d["totalTokens"], d[cost_key]) for d in data["daily"]}, data["totals"]


def rel(a, b):
    return abs(a - b) / max(abs(a), abs(b), 1e-9)


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("summary")
    ap.add_argument("c20_claude")
    ap.add_argument("c20_codex")
    ap.add_argument("c18")
    ap.add_argument("--out")
    a = ap.parse_args()
    with open(a.summary) as f:
        s = json.load(f)
    claude20, claude20_totals = by_date(a.c20_claude, "totalCost")
    codex20, codex20_totals = by_date(a.c20_codex, "costUSD")
    claude18, claude18_totals = by_date(a.c18, "totalCost")

    window = [r["day"] for r in s["days"]]
    sums = {k: 0.0 for k in ("tarvikClaude", "tarvikCodex", "c20Claude", "c20Codex", "c18",
                             "tier", "hour", "fallback", "restart")}
    tokens = {"tarvik": 0, "c20": 0, "c18": 0, "restart": 0}
    restart_days = []
    worst = {"tokens": 0, "cost20": 0.0, "cost18": 0.0}
    hour_tokens = fallback_tokens = 0
    for r in s["days"]:
        cl = r["agents"].get("claude", {})
        cx = r["agents"].get("codex", {})
        day = r["day"]
        t20 = claude20.get(day, (0, 0.0))[0] + codex20.get(day, (0, 0.0))[0]
        t18 = claude18.get(day, (0, 0.0))[0]
        tokens["tarvik"] += r["tokens"]
        tokens["c20"] += t20
        tokens["c18"] += t18
        # ccusage's tokens against the recomputation under ccusage's reading of the logs
        worst["tokens"] = max(worst["tokens"],
                              abs(claude20.get(day, (0, 0.0))[0] - cl.get("ccTokens", 0)),
                              abs(codex20.get(day, (0, 0.0))[0] - cx.get("ccTokens", 0)),
                              abs(t18 - cl.get("ccTokens", 0)))
        tokens["restart"] += cx.get("restartTokens", 0)
        if cx.get("restartTokens", 0):
            restart_days.append((day, cx["restartTokens"]))
        for agent, got, want, key in (
                ("claude", claude20.get(day, (0, 0.0))[1], cl.get("ccusage20", 0.0), "cost20"),
                ("codex", codex20.get(day, (0, 0.0))[1], cx.get("ccusage20", 0.0), "cost20"),
                ("claude", claude18.get(day, (0, 0.0))[1], cl.get("ccusage18", 0.0), "cost18")):
            worst[key] = max(worst[key], rel(got, want))
        sums["tarvikClaude"] += cl.get("cost", 0.0)
        sums["tarvikCodex"] += cx.get("cost", 0.0)
        sums["c20Claude"] += claude20.get(day, (0, 0.0))[1]
        sums["c20Codex"] += codex20.get(day, (0, 0.0))[1]
        sums["c18"] += claude18.get(day, (0, 0.0))[1]
        sums["tier"] += cl.get("tierExtra", 0.0)
        sums["hour"] += cl.get("hourExtra", 0.0)
        sums["fallback"] += cx.get("fallbackExtra", 0.0)
        sums["restart"] += cx.get("restartExtra", 0.0)
        hour_tokens += cl.get("hourTokens", 0)
        fallback_tokens += cx.get("fallbackTokens", 0)

    # Days ccusage reports outside Tarvik's 30: from logs Tarvik passes over, or older lines.
    outside = {}
    for name, daily in (("claude", claude20), ("codex", codex20)):
        extra = {d: v[0] for d, v in daily.items() if d not in window}
        recomputed = {d: v for d, v in s["allTime"][name].items() if d not in window}
        outside[name] = {"days": len(extra), "tokens": sum(extra.values()),
                         "recomputedTokens": sum(recomputed.values()),
                         "equal": extra == {d: v for d, v in recomputed.items() if v}}
    all_time_equal = (sum(s["allTime"]["claude"].values()) == claude20_totals["totalTokens"]
                      and sum(s["allTime"]["codex"].values()) == codex20_totals["totalTokens"]
                      and sum(s["allTime"]["claude"].values()) == claude18_totals["totalTokens"])

    explained = (worst["tokens"] == 0 and worst["cost20"] <= 1e-6 and worst["cost18"] <= 1e-6
                 and outside["claude"]["equal"] and outside["codex"]["equal"] and all_time_equal)
    tarvik_cost = sums["tarvikClaude"] + sums["tarvikCodex"]
    c20_cost = sums["c20Claude"] + sums["c20Codex"]
    report = {"window": [window[0], window[-1]], "tokens": tokens, "costs": sums,
              "restartDays": restart_days,
              "worst": worst, "hourTokens": hour_tokens, "fallbackTokens": fallback_tokens,
              "outside": outside, "allTimeEqual": all_time_equal, "explained": explained}
    if a.out:
        with open(a.out, "w") as f:
            json.dump(report, f, indent=1)

    print(f"In Tarvik's 30 days ({window[0]} … {window[-1]}):")
    print(f"  tokens: Tarvik {tokens['tarvik']:,}; ccusage 20 claude+codex {tokens['c20']:,}; "
          f"ccusage 18 (Claude Code only) {tokens['c18']:,}")
    print(f"  ccusage 20 − Tarvik = {tokens['c20'] - tokens['tarvik']:,} tokens = Codex restarts "
          f"the running totals do not show, read from last_token_usage: "
          + (", ".join(f"{d} {n:,}" for d, n in restart_days) or "none"))
    print(f"  recomputed under ccusage's reading: largest difference on a day "
          f"{worst['tokens']} tokens")
    print(f"  cost:   Tarvik ${tarvik_cost:,.2f} (Claude ${sums['tarvikClaude']:,.2f}, Codex "
          f"${sums['tarvikCodex']:,.2f}); ccusage 20 ${c20_cost:,.2f} (Claude "
          f"${sums['c20Claude']:,.2f}, Codex ${sums['c20Codex']:,.2f}); ccusage 18 Claude "
          f"${sums['c18']:,.2f}")
    print(f"  ccusage 20 − Tarvik = ${c20_cost - tarvik_cost:,.2f} = Sonnet 4.5 above-200k rate "
          f"${sums['tier']:,.2f} + 1-hour cache writes at 2× input ${sums['hour']:,.2f} "
          f"({hour_tokens:,} tokens) + Codex logs without a model priced as gpt-5 "
          f"${sums['fallback']:,.2f} ({fallback_tokens:,} tokens) + those Codex restarts "
          f"${sums['restart']:,.2f}")
    print(f"  ccusage 18 − Tarvik (Claude) = ${sums['c18'] - sums['tarvikClaude']:,.2f} = "
          f"Sonnet 4.5 above-200k rate ${sums['tier']:,.2f}")
    print(f"  recomputed under those rules: largest relative error per day "
          f"{worst['cost20']:.1e} (20.x), {worst['cost18']:.1e} (18.x)")
    for name, o in outside.items():
        print(f"Outside the 30 days ccusage reports {o['days']} more {name} days, "
              f"{o['tokens']:,} tokens (recomputed from every file: {o['recomputedTokens']:,}; "
              f"{'equal' if o['equal'] else 'DIFFERENT'})")
    print(f"All-time totals equal to the recomputation: {all_time_equal}")
    print("Every difference explained" if explained else "UNEXPLAINED DIFFERENCES")
    return 0 if explained else 1


if __name__ == "__main__":
    sys.exit(main())
