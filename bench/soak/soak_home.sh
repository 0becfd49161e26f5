# Sourced by the soak scripts: a temporary home under $1 with signed-in agents (made-up
# credentials), the agents' services pointed at a local stand-in (bench/soak/agent_stand_in.py,
# alive for $2 seconds) and a private session bus, so nothing reaches the network or the
# desktop's own keyring. The caller's EXIT trap ends what this starts: the stand-in is one of its
# jobs, the bus's pid is in $1/bus.pid.
soak_work=$1
export HOME=$soak_work/home XDG_CONFIG_HOME=$soak_work/home/.config
export XDG_DATA_HOME=$soak_work/home/.local/share XDG_CACHE_HOME=$soak_work/home/.cache
export XDG_RUNTIME_DIR=$soak_work/run
# Tarvik's one-instance socket lives in the temporary folder: a folder of its own keeps the soak
# from handing over to a Tarvik already running (the user's, or another soak's).
export TMPDIR=$soak_work/tmp
mkdir -p "$TMPDIR"
unset CLAUDE_CONFIG_DIR CODEX_HOME
mkdir -p "$HOME/.claude" "$HOME/.codex" "$XDG_CONFIG_HOME/github-copilot" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
echo '{"claudeAiOauth":{"accessToken":"soak","subscriptionType":"pro"}}' >"$HOME/.claude/.credentials.json"
echo '{"tokens":{"access_token":"soak","account_id":"soak"}}' >"$HOME/.codex/auth.json"
echo '{"github.com":{"user":"soak","oauth_token":"soak"}}' >"$XDG_CONFIG_HOME/github-copilot/hosts.json"

dbus-daemon --session --fork --print-address=3 --print-pid=4 3>"$soak_work/bus" 4>"$soak_work/bus.pid"
DBUS_SESSION_BUS_ADDRESS=$(head -n1 "$soak_work/bus")
export DBUS_SESSION_BUS_ADDRESS

python3 "$(dirname "${BASH_SOURCE[0]}")/agent_stand_in.py" "$soak_work/port" \
    "$soak_work/requests" "$2" &
for _ in $(seq 100); do [ -s "$soak_work/port" ] && break; sleep 0.1; done
soak_api=http://127.0.0.1:$(cat "$soak_work/port")/
export TARVIK_CLAUDE_API=$soak_api TARVIK_CODEX_API=$soak_api
export TARVIK_COPILOT_API=$soak_api TARVIK_OPENROUTER_API=$soak_api
