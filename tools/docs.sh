#!/usr/bin/env bash
# Makes the documentation for a browser: the pages of every class, and the guides.
set -euo pipefail

# shellcheck source=tools/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

usage()
{
    cat <<'END'
usage: docs.sh

Makes pages for a browser of README.md, the guides in docs/ and the headers in include/, with Doxygen, and tells where
the first page lies. A warning of Doxygen is a failure: a public name without documentation, a reference that leads
nowhere. Nothing is made when nothing has changed.

  --help     show this text

Installs those packages of tools/packages.txt that it needs and that are missing (with sudo where need be). Everything
else stays in build/.
END
}

case ${1:-} in
    '') ;;
    --help) usage; exit 0 ;;
    *) usage >&2; exit 2 ;;
esac

end_everything_on_exit
install_packages build "${qel_preset%-*}" docs
lock_build
configure_without_tests
build docs
echo "The first page is $qel_build/docs/html/index.html"
