# Installs into a scratch folder with a blank in its name. Everything must be in its
# place, and the installed programs must run from there, without the build tree in
# their environment.
set -eu
# shellcheck source=packaging/tests/expect.sh
. "$(dirname -- "$0")/expect.sh"

unset ZOT5_VEL_PARSER ZOT5_VEL_LIBSDIR ZOT5_VEL_LIBS ZOT5ROOT ZOTBUILDID ZOT_HELP_DIR

stage="$scratch/a stage"
DESTDIR=$stage cmake --install "$VEL_BUILD_DIR" --prefix /opt/vel >"$scratch/log" 2>&1 || {
    cat "$scratch/log"
    exit 1
}
prefix=$stage/opt/vel

expect "no files outside the prefix" "opt" "$(ls "$stage")"
for path in bin/veledit bin/veltool libexec/veleditor/veleditor; do
    expect "$path can be run" yes "$([ -x "$prefix/$path" ] && echo yes)"
done
for path in share/veleditor/perl/API.pm share/veleditor/perl/VEL/embeddedParserInit.pl \
    share/veleditor/perl/auto/VEL/Parser/Lite/Lite.so share/veleditor/libraries/rules.vel \
    share/veleditor/etc/icons/ZOT.png share/veleditor/etc/version \
    share/applications/veleditor.desktop share/man/man1/veleditor.1 share/man/man1/veledit.1 \
    share/man/man1/veltool.1 share/man/man5/vel.5 share/bash-completion/completions/veltool \
    share/bash-completion/completions/veledit share/zsh/site-functions/_veltool \
    share/zsh/site-functions/_veledit; do
    expect "$path is there" yes "$([ -f "$prefix/$path" ] && echo yes)"
done
if [ -x "$VEL_BUILD_DIR/bin/velhelp" ]; then
    expect "the help viewer is an executable where the editor looks for it" yes \
        "$([ -x "$prefix/share/veleditor/help/../../HelpViewer/OMBRAHelpViewer.exe" ] && echo yes)"
    expect "the help viewer can be run" yes \
        "$([ -x "$prefix/libexec/veleditor/velhelp" ] && echo yes)"
fi
expect "no files that only a build needs" "" \
    "$(find "$prefix" -name '*.a' -o -name '*.cmake' -o -name '*.h' -o -name '*_test*')"

file="$scratch/a file.vel"
cat >"$file" <<'VEL'
FLOW:
  DOMAIN: Duct
    Option = Fluid
  END
END
VEL
expect "veltool reads a file" "Fluid" \
    "$("$prefix/bin/veltool" get "$file" '/FLOW/DOMAIN:Duct/Option')"
cat >"$scratch/where.pl" <<'PERL'
use VEL::Parser::Lite;
print $INC{'VEL/Parser/Lite.pm'};
PERL
expect "veltool uses the installed Perl packages" \
    "$prefix/share/veleditor/perl/VEL/Parser/Lite.pm" \
    "$("$prefix/bin/veltool" perl "$scratch/where.pl")"
expect "the module loads from there with the system's perl" "ok" \
    "$(PERL5LIB=$prefix/share/veleditor/perl ${VEL_PERL:-perl} -MVEL::Parser::Lite \
        -e 'print VEL::Parser::Lite::NEW() ? "ok" : "no database"')"
expect "the editor starts and checks its command line" \
    "$prefix/libexec/veleditor/veleditor: must specify a vel file" "$("$prefix/bin/veledit")"
viewer=$prefix/share/veleditor/help/../../HelpViewer/OMBRAHelpViewer.exe
expect "the help viewer runs where the editor expects it" "Usage:" \
    "$("$viewer" --help | cut -d ' ' -f 1 | head -n 1)"
expect "with its pages" yes "$([ -f "$prefix/share/veleditor/help/en-us/tutorials.md" ] && echo yes)"

finish
