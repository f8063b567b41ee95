#!/usr/bin/env bash
# window_check.sh PROGRAM CASE: runs one case of the program in a fresh directory. Cases that open the
# window get a display of their own, on which the key is pressed or, in the case "closed", the window is
# closed. Exit code 77: tools are missing.
set -uo pipefail
program=$1
case=$2

directory=$(mktemp -d)
server=
check=
finish() {
  [ -z "$check" ] || kill "$check" 2>/dev/null
  [ -z "$server" ] || { kill "$server" 2>/dev/null; wait "$server" 2>/dev/null; }
  rm -rf "$directory"
}
trap finish EXIT
cd "$directory" || exit 1
unset QT_QPA_PLATFORM WAYLAND_DISPLAY XDG_SESSION_TYPE

case $case in
  windowless) unset DISPLAY; "$program" identity; exit ;;
  hostile) unset DISPLAY; "$program" hostile; exit ;;
  no-display) unset DISPLAY; "$program" no-display; exit ;;
  dead-display) DISPLAY=:9999 "$program" no-display; exit ;;
  offscreen) unset DISPLAY; QT_QPA_PLATFORM=offscreen "$program" no-display; exit ;;
esac

for tool in Xvfb xdotool; do
  command -v "$tool" >/dev/null || { echo "Skipped: $tool is not installed"; exit 77; }
done
mkfifo display-number
Xvfb -displayfd 3 -screen 0 800x600x24 -nolisten tcp 3>display-number 2>xvfb.log &
server=$!
read -r -t 30 number <display-number || { cat xvfb.log; exit 1; }
export DISPLAY=:$number

check_case=$case
[ "$case" != closed ] || check_case=identity
"$program" "$check_case" &
check=$!
window=$(timeout 60 xdotool search --sync --onlyvisible --name '^Transformed Image$' | head -n 1)
[ -n "$window" ] || { echo "No window called 'Transformed Image' appeared"; exit 1; }
sleep 0.5
kill -0 "$check" 2>/dev/null || { echo "The call did not wait for a key"; exit 1; }
[ ! -e D:/CorrectedImage2.bmp ] || { echo "The result was written before the key"; exit 1; }

# The window may not accept keys immediately.
for _ in $(seq 40); do
  if [ "$case" = closed ]; then
    "$program" close "$window"
  else
    xdotool key --window "$window" space 2>/dev/null
  fi
  sleep 0.25
  [ -e D:/CorrectedImage2.bmp ] && break
  kill -0 "$check" 2>/dev/null || break
done
[ -e D:/CorrectedImage2.bmp ] || { echo "The key or the closing did not end the wait"; exit 1; }
wait "$check"
result=$?
check=
exit "$result"
