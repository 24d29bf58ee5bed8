# shellcheck shell=bash
# expect WHAT GOT WANTED: ends the script if the two differ.
expect() {
  if [ "$2" != "$3" ]; then
    echo "$1: got '$2', expected '$3'" >&2
    exit 1
  fi
}
