#!/usr/bin/env bash
# Tarvik's speed test on a shaped link, against Cloudflare's own engine (@cloudflare/speedtest
# under Node) and six parallel curl transfers, all in one run over the same link.
#
# The link: three network namespaces, client — router — server, joined by two veth pairs with a
# 1,500-byte MTU. The router forwards, and it is where the link is shaped:
# - the rate and the queue: a token-bucket filter (tbf) on each of the router's two egress
#   interfaces (towards the client: the download; towards the server: the upload), its byte
#   limit being the queue;
# - the round-trip time: the kernel here has no netem, so iptables sends every packet the router
#   receives to an NFQUEUE, where tarvik_bench_delay_line holds it for half the round trip.
# The queue sits in a forwarding hop, as on a real path. (A tbf on an ifb at the receiver's
# ingress would not do: there the packets are still charged to the sending socket, and TCP's
# small-queue limit then keeps about 1 ms of data per connection in that queue, so a 500 ms
# queue never fills.) Client and server use cubic, through their routes.
#
# usage (as root): bench/speedtest/shaped_link.sh [build folder]   (default build/bench)
#   DURATION=10 seconds each way (Tarvik's default)
set -euo pipefail
cd "$(dirname "$0")/../.."
[ "$(id -u)" -eq 0 ] || { echo "shaped_link.sh builds network namespaces: run it as root" >&2; exit 1; }
scripts/setup.sh bench
build=${1:-build/bench}
duration=${DURATION:-10}
warmup=2 # seconds each curl run leaves out, as Tarvik leaves out its own first 2 s

# What the run needs, built or installed only when missing.
if [ ! -f "$build/CMakeCache.txt" ]; then
  cmake -S . -B "$build" -G Ninja -DTARVIK_BENCH=ON -DTARVIK_TESTS=OFF -DCMAKE_BUILD_TYPE=Release >/dev/null
fi
for target in tarvik:tarvik tools/speed_server/tarvik-speed-server:tarvik-speed-server \
              bench/tarvik_bench_delay_line:tarvik_bench_delay_line; do
  [ -x "$build/${target%%:*}" ] || cmake --build "$build" --target "${target##*:}" >/dev/null
done
build=$(realpath "$build")
tarvik=$build/tarvik
server=$build/tools/speed_server/tarvik-speed-server
delay_line=$build/bench/tarvik_bench_delay_line
reference=$build/node-speedtest # npm's folder for the reference; never committed
if [ ! -f "$reference/node_modules/@cloudflare/speedtest/package.json" ]; then
  npm install --prefix "$reference" --no-audit --no-fund --loglevel=error \
    @cloudflare/speedtest@1.14.1 >/dev/null
fi

ns_c=tarvik-bench-client-$$
ns_r=tarvik-bench-router-$$
ns_s=tarvik-bench-server-$$
addr_s=10.77.2.2
port=8080
url=http://$addr_s:$port/
mtu=1500
# TCP payload per byte the tbf counts (it counts whole Ethernet frames): 1,448 bytes of data
# (MTU less IP, TCP and timestamp headers) in every 1,514-byte frame.
payload_share=$(awk -v m=$mtu 'BEGIN { printf "%.5f", (m - 52) / (m + 14) }')

work=$(mktemp -d)
delay_pid=""
cleanup() {
  set +e
  # Whatever still runs in the namespaces was started here: stop it by its id.
  for ns in "$ns_c" "$ns_r" "$ns_s"; do
    pids=$(ip netns pids "$ns" 2>/dev/null)
    [ -z "$pids" ] || kill $pids 2>/dev/null
  done
  wait 2>/dev/null
  # Deleting a namespace removes its veth ends, qdiscs and iptables rules with it.
  for ns in "$ns_c" "$ns_r" "$ns_s"; do ip netns del "$ns" 2>/dev/null; done
  rm -rf "$work"
}
trap cleanup EXIT
trap 'exit 130' INT TERM
export LANG=C.UTF-8 HOME=$work XDG_CONFIG_HOME=$work/.config XDG_DATA_HOME=$work/.local/share

in_c() { ip netns exec "$ns_c" "$@"; }

# Waits up to 5 s for a line matching $2 in file $1.
await_line() {
  for _ in $(seq 50); do grep -q "$2" "$1" 2>/dev/null && return 0; sleep 0.1; done
  echo "shaped_link.sh: no '$2' in $1" >&2; cat "$1" >&2; exit 1
}

build_link() {
  for ns in "$ns_c" "$ns_r" "$ns_s"; do
    ip netns add "$ns"
    ip -n "$ns" link set lo up
  done
  ip -n "$ns_c" link add veth0 mtu $mtu type veth peer name cli0 mtu $mtu netns "$ns_r"
  ip -n "$ns_s" link add veth0 mtu $mtu type veth peer name srv0 mtu $mtu netns "$ns_r"
  ip -n "$ns_c" addr add 10.77.1.2/24 dev veth0
  ip -n "$ns_r" addr add 10.77.1.1/24 dev cli0
  ip -n "$ns_r" addr add 10.77.2.1/24 dev srv0
  ip -n "$ns_s" addr add $addr_s/24 dev veth0
  ip -n "$ns_c" link set veth0 up
  ip -n "$ns_s" link set veth0 up
  ip -n "$ns_r" link set cli0 up
  ip -n "$ns_r" link set srv0 up
  # The kernel's default here is BBR, which keeps queues short by itself; cubic, the usual
  # Linux default, fills them as most senders do. A route can choose it without touching the
  # host's own settings.
  ip -n "$ns_c" route add 10.77.2.0/24 via 10.77.1.1 congctl cubic
  ip -n "$ns_s" route add 10.77.1.0/24 via 10.77.2.1 congctl cubic
  ip netns exec "$ns_r" sysctl -qw net.ipv4.ip_forward=1
  # No --queue-bypass: with no delay line running, packets are dropped rather than passed on
  # undelayed.
  ip netns exec "$ns_r" iptables -t raw -A PREROUTING -j NFQUEUE --queue-num 0
}

# shape DEVICE RATE_BIT_PER_S QUEUE_MS: the router's rate and queue towards one end (rate 0: no
# limit).
shape() {
  local dev=$1 rate=$2 queue_ms=$3 burst limit
  if [ "$rate" = 0 ]; then
    tc -n "$ns_r" qdisc replace dev "$dev" root pfifo limit 100000
    return
  fi
  # The bucket holds 4 ms at the rate (at least 16 KB), so that a timer that fires late costs
  # no throughput; at most 60 KB, so that tbf cuts the larger GSO super-packets into frames.
  burst=$(awk -v r="$rate" 'BEGIN { b = r / 8 * 0.004; if (b < 16000) b = 16000; if (b > 60000) b = 60000; printf "%.0f", b }')
  limit=$(awk -v r="$rate" -v q="$queue_ms" 'BEGIN { printf "%.0f", r / 8 * q / 1000 }')
  tc -n "$ns_r" qdisc replace dev "$dev" root tbf rate "${rate}bit" burst "$burst" limit "$limit"
}
tbf_drops() { tc -n "$ns_r" -s qdisc show dev "$1" | awk '/dropped/ { gsub(",", ""); print $7; exit }'; }

# The delay line is started with ip netns exec itself, never through a shell function, so that
# $! is the process to stop. When stopped it prints its account as JSON.
start_delay() {
  ip netns exec "$ns_r" "$delay_line" --queue 0 --delay-us "$1" --realtime >"$work/delay.out" 2>&1 &
  delay_pid=$!
  await_line "$work/delay.out" ready
}
stop_delay() {
  kill "$delay_pid"
  wait "$delay_pid" || true
  delay_pid=""
}
delay_account() {
  tail -n 1 "$work/delay.out" | jq -r \
    '"\(.packets) packets (\(.gsoPackets) GSO), \(.overruns) lost, released \(.meanLateUs) µs late on average, \(.maxLateUs) µs at worst"'
}

# Payload bytes the client's connections to the server have received or had acknowledged.
tcp_bytes() {
  in_c ss -tinH state established "( dport = :$port )" |
    grep -o "$1:[0-9]*" | awk -F: '{ s += $2 } END { printf "%.0f", s }'
}

# curl_phase down|up: six curl processes, each one connection re-issuing requests (like Tarvik's
# six), for DURATION seconds; prints Mbit/s of payload after the warm-up, from the kernel's own
# per-connection counts.
curl_phase() {
  local pids=() counter t0 t1 b0 b1
  for _ in 1 2 3 4 5 6; do
    if [ "$1" = down ]; then
      ip netns exec "$ns_c" curl -s "${url}__down?bytes=50000000&n=[1-100000]" >/dev/null &
    else
      ip netns exec "$ns_c" curl -s -H 'Expect:' -H 'Content-Type: application/octet-stream' \
        --data-binary @"$work/body" "${url}__up?n=[1-100000]" >/dev/null &
    fi
    pids+=($!)
  done
  counter=$([ "$1" = down ] && echo bytes_received || echo bytes_acked)
  sleep $warmup
  t0=$(date +%s.%N); b0=$(tcp_bytes $counter)
  sleep $((duration - warmup))
  t1=$(date +%s.%N); b1=$(tcp_bytes $counter)
  kill "${pids[@]}" 2>/dev/null || true
  wait "${pids[@]}" 2>/dev/null || true
  awk -v b="$((b1 - b0))" -v t0="$t0" -v t1="$t1" 'BEGIN { printf "%.2f", 8 * b / (t1 - t0) / 1e6 }'
}

# Cores a program used: its user+system time over its wall time, from /usr/bin/time's file.
cores() { awk '{ printf "%.2f", ($2 + $3) / $1 }' "$1"; }

# The link's round trip as a program sees it (-U: ping's default leaves out the time a reply
# waits after arriving, which here is the delay itself).
ping_rtt() { in_c ping -U -q -n -c 20 -i 0.05 $addr_s | awk -F/ '/^rtt/ { print $5 }'; }

head -c 8000000 /dev/zero >"$work/body" # curl's upload body, the size of Tarvik's
build_link
ip netns exec "$ns_s" "$server" --address $addr_s --port $port >"$work/server.out" 2>&1 &
await_line "$work/server.out" "^http"

load=$(cut -d' ' -f1-3 /proc/loadavg)
# First, what the link carries with the delay line and no rate limit (1 ms each way): the
# delay line must not be what limits the 1 Gbit/s scenario.
shape cli0 0 0
shape srv0 0 0
start_delay 1000
raw_down=$(curl_phase down)
raw_up=$(curl_phase up)
stop_delay
echo "Load average before the run: $load."
echo "Link with no rate limit (delay line only, 2 ms round trip): curl ×6 carries" \
  "$raw_down Mbit/s down, $raw_up Mbit/s up; delay line: $(delay_account)."
echo

# label|down bit/s|up bit/s|RTT ms|queue ms
scenarios=(
  "a: 100/20 Mbit/s, 20 ms, short queue|100000000|20000000|20|20"
  "b: 100/20 Mbit/s, 20 ms, 500 ms queue|100000000|20000000|20|500"
  "c: 1 Gbit/s, 2 ms, short queue|1000000000|1000000000|2|20"
)
rows=()
checks=()
for s in "${scenarios[@]}"; do
  IFS='|' read -r label down up rtt queue <<<"$s"
  echo "Running scenario $label …" >&2
  shape cli0 "$down" "$queue" # towards the client: the download
  shape srv0 "$up" "$queue"   # towards the server: the upload
  start_delay $((rtt * 500))
  ping=$(ping_rtt)

  /usr/bin/time -f '%e %U %S' -o "$work/tarvik.time" \
    ip netns exec "$ns_c" "$tarvik" speedtest --base-url "$url" --duration "$duration" --json \
    >"$work/tarvik.json"
  sleep 1
  down_ceiling=$(awk -v r="$down" -v p="$payload_share" 'BEGIN { printf "%.0f", r * p }')
  up_ceiling=$(awk -v r="$up" -v p="$payload_share" 'BEGIN { printf "%.0f", r * p }')
  /usr/bin/time -f '%e %U %S' -o "$work/reference.time" \
    ip netns exec "$ns_c" node bench/speedtest/cloudflare_reference.mjs "$reference" "$url" \
    "$down_ceiling" "$up_ceiling" "$duration" >"$work/reference.json"
  sleep 1
  curl_down=$(curl_phase down)
  curl_up=$(curl_phase up)

  stop_delay
  rows+=("$(jq -rn --arg name "$label" --argjson down "$down" --argjson up "$up" \
    --argjson share "$payload_share" --argjson rtt "$rtt" --arg ping "$ping" \
    --argjson cd "$curl_down" --argjson cu "$curl_up" \
    --arg cores "$(cores "$work/tarvik.time") / $(cores "$work/reference.time")" \
    --slurpfile t "$work/tarvik.json" --slurpfile r "$work/reference.json" '
    def f1: . * 10 | round / 10;
    def pct(x; rate): "\(x / (rate * $share / 1e6) * 1000 | round / 10) %";
    def ms: if . == null then "–" else (. | f1 | tostring) end;
    $t[0] as $t | $r[0] as $r |
    "| \($name) | \($down / 1e6) / \($up / 1e6) | \($down * $share / 1e6 | f1) / \($up * $share / 1e6 | f1) " +
    "| \($t.downloadMbps | f1) (\(pct($t.downloadMbps; $down))) / \($t.uploadMbps | f1) (\(pct($t.uploadMbps; $up))) " +
    "| \(pct($r.downloadMbps; $down)) / \(pct($r.uploadMbps; $up)) " +
    "| \(pct($cd; $down)) / \(pct($cu; $up)) " +
    "| \($rtt) / \($ping | tonumber | f1) / \($t.idleLatency | ms) / \($r.idleLatency | ms) " +
    "| \($t.downloadLatency | ms) / \($t.uploadLatency | ms) | \($r.downloadLatency | ms) / \($r.uploadLatency | ms) " +
    "| \($cores) |"')")
  checks+=("| ${label%%:*} | $(tbf_drops cli0) / $(tbf_drops srv0) | $(delay_account) |")
  sleep 1
done

echo "Rates in Mbit/s: the tbf counts whole frames, so each percentage is of the TCP payload it"
echo "lets through (the payload ceiling, × $payload_share at MTU $mtu). Latencies in ms."
echo
echo "| scenario | shaped down / up | payload ceiling | Tarvik down / up | reference down / up | curl ×6 down / up | RTT set / ping / Tarvik idle / reference idle | Tarvik loaded down / up | reference loaded down / up | CPU cores Tarvik / reference |"
echo "|---|---|---|---|---|---|---|---|---|---|"
printf '%s\n' "${rows[@]}"
echo
echo "| scenario | tbf drops down / up | delay line |"
echo "|---|---|---|"
printf '%s\n' "${checks[@]}"
