#!/usr/bin/env bash
# Makes a build tree's orvcc package importable by the python3 on PATH and by
# Debian's /usr/bin/python3, as an editable install does: a .pth file in each
# interpreter's site directory names <build>/python. An interpreter of the
# same version as Debian's that lacks numpy (a pyenv build, say; no network
# to install it) is also pointed at Debian's dist-packages, where numpy is.
#   tools/python-dev.sh [build-dir]
set -euo pipefail
dir=$(cd "${1:-build}" && pwd)/python
[ -f "$dir/orvcc/__init__.py" ] || exit 0
debian=/usr/bin/python3
for py in $(printf '%s\n' "$(command -v python3 || true)" "$debian" | sort -u); do
  [ -x "$py" ] || continue
  site=$("$py" -c 'import site; print(site.getsitepackages()[0])' 2>/dev/null) || continue
  rm -f "$site/orvcc-build.pth"  # an earlier one would answer the numpy question below
  lines="$dir"
  if ! "$py" -c 'import numpy' 2>/dev/null && [ -x "$debian" ] &&
     [ "$("$py" -c 'import sys; print(sys.version_info[:2])')" = "$("$debian" -c 'import sys; print(sys.version_info[:2])')" ]; then
    lines="$lines"$'\n'/usr/lib/python3/dist-packages
  fi
  mkdir -p "$site" && printf '%s\n' "$lines" > "$site/orvcc-build.pth" ||
    echo "python-dev: cannot write $site/orvcc-build.pth" >&2
done
