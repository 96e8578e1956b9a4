#!/usr/bin/env bash
# The main job, step by step, in a folder of its own.  demo.sh BUILD-FOLDER WORK-FOLDER
set -euo pipefail

build=$(cd "$1" && pwd)
kpx=$build/tools/kpx/kpx
export PATH=$build/tools/kpx:$build/examples:$PATH
rm -rf "$2" && mkdir -p "$2" && cd "$2"

# Bold where a person looks at a terminal that can show it.
bold='' plain=''
if [ -t 1 ] && [ -z "${NO_COLOR:-}" ] && [ "${TERM:-dumb}" != dumb ]; then
  bold=$'\033[1m' plain=$'\033[0m'
fi
explain() { printf '\n%s%s%s\n' "$bold" "$*" "$plain"; }
# Shows a command as a person would type it, and runs it; the exit codes named in "allowed" are
# answers, not failures.
show() {
  local allowed=$1 code=0; shift
  printf '  $ %s\n' "$*"
  bash -c "$*" | sed 's/^/  /' || code=${PIPESTATUS[0]}
  case " $allowed " in *" $code "*) ;; *) echo "unexpected exit code $code" >&2; exit 1 ;; esac
  [ "$code" = 0 ] || printf '  (exit %s)\n' "$code"
}

[ -x "$kpx" ] || { echo "demo: build first: ./dev build" >&2; exit 1; }

explain "1. A new general-settings object, complete with its defaults, written as XML."
show 0 'kpx config defaults CFGGeneralSettings > general.xml'
show 0 'head -c 600 general.xml; echo; echo ...'
show 0 'kpx xml stats general.xml'

explain "2. The position tolerance of one module is set to 0.02. It is stored with three decimals."
show 0 'kpx config set general.xml CA2T_Tol_XY 0.05'
show 0 'kpx config set general.xml CA2T_Tol_XY 0.02'
show 0 'kpx config get general.xml CA2T_Tol_XY'

explain "3. Two more settings are changed; nothing else in the file moves."
show 0 'cp general.xml before.xml'
show 0 'kpx config set general.xml FDS_Tol_Z 0.035'
show 0 'kpx config set general.xml NIV_LG 7'
show 1 'kpx config diff before.xml general.xml'
show 0 'diff before.xml general.xml | grep -c "^>" | sed "s/$/ lines differ/"'

explain "4. A file from elsewhere: it has a setting nobody knows, and one is missing."
show 0 'sed -e "s/Name=\"KT_Message\"/Name=\"KT_FromTheFuture\"/" general.xml > foreign.xml'
show '0 1' 'kpx config validate foreign.xml'

explain "5. The same from a module's side: read into a fresh object, change through the typed
   accessor, save. The unknown setting is ignored, the missing one keeps its default."
show 0 'SettingsExample foreign.xml changed.xml'
show 0 'kpx config get changed.xml KT_Message'
show 1 'kpx config get changed.xml KT_FromTheFuture 2>&1'

explain "6. Compared with the defaults: exactly what was changed."
show '0 1' 'kpx config diff changed.xml'

explain "7. The XML engine over a real file of this machine."
show 0 'kpx xml stats /usr/share/mime/packages/freedesktop.org.xml'
show 0 'kpx xml check /usr/share/mime/packages/freedesktop.org.xml'

printf '\nThe files of this demonstration are in %s\n' "$2"
