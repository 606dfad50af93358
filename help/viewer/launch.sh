#!/bin/sh
# Starts the help viewer, from the build tree or from an installation. This script has
# the name by which the editor looks for the viewer.
set -eu
here=$(dirname -- "$0")
for viewer in "$here/../../bin/velhelp" "$here/../../../../libexec/veleditor/velhelp"; do
    [ ! -x "$viewer" ] || exec "$viewer" "$@"
done
printf '%s: cannot find velhelp; install the help viewer again\n' "$0" >&2
exit 1
