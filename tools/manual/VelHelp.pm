package VelHelp;

# Reads the help texts of veltool. The lists of commands and options in the man page
# and in the shell completions come only from here.

use strict;
use warnings;
use Exporter 'import';

our @EXPORT_OK = qw(read_commands);

# read_commands(PROGRAM): the commands in the order of --help. Subcommands follow
# their command, such as "ds". Each is
#
#     { name => 'ds list', words => 'FILE', purpose => ..., details => ...,
#       options => [ { names => ['-o', '--output'], value => 'OUT', text => ... } ],
#       under => [ 'list', ... ] }
#
# `value` is empty for an option that takes no value. `under` has the subcommands of
# the command.
sub read_commands {
    my ($program) = @_;
    my @commands;
    my $listed = 0;
    for my $line (split /\n/, help($program)) {
        if ($line eq 'Commands:') {
            $listed = 1;
        } elsif ($line eq '') {
            $listed = 0;
        } elsif ($listed && $line =~ /^  ([a-z][a-z-]*)/) {
            push @commands, read_command($program, $1);
        }
    }
    die "$program --help lists no commands\n" if !@commands;
    return @commands;
}

sub read_command {
    my ($program, $name) = @_;
    my $text = help($program, split(/ /, $name));
    my ($purpose, $details, $rest) = $text =~ /\A(.*?)\n\n(?:(.*?)\n\n)?\n?(Usage: .*)\z/s
        or die "$program $name --help has an unknown form:\n$text";
    my ($words) = $rest =~ /\AUsage: veltool \Q$name\E \[OPTIONS\] ?(.*)/;
    my %command = (
        name    => $name,
        words   => $words // '',
        purpose => $purpose,
        details => $details // '',
        options => [read_options($rest)],
        under   => [commands_among($words // '')],
    );
    return (\%command, map { read_command($program, "$name $_") } @{ $command{under} });
}

# The subcommands in "list|read|write ..." or "check [LIBRARY...]": the words in small
# letters.
sub commands_among {
    my ($words) = @_;
    my ($first) = split / /, $words;
    return defined $first && $first =~ /\A[a-z][a-z|-]*\z/ ? split(/\|/, $first) : ();
}

sub read_options {
    my ($text) = @_;
    my @options;
    for my $line (split /\n/, $text) {
        # Only --help says what a value may be and which options exclude each other.
        $line =~ s/:[A-Z]+ in \[[^]]*\]|:\{[^}]*\}| (?:Excludes|Needs):(?: -\S+)+//g;
        if ($line =~ /^  (-\S+)(?: ([A-Z]\S*)(?: \.\.\.)?)?(?: {2,}(\S.*))?$/) {
            push @options, { names => [split /,/, $1], value => $2 // '', text => $3 // '' };
        } elsif (@options && $line =~ /^ {3,}(\S.*)/) {
            $options[-1]{text} .= ($options[-1]{text} eq '' ? '' : ' ') . $1;
        } elsif ($line =~ /^ +-/) {
            die "the line \"$line\" is not an option\n";
        }
    }
    return @options;
}

sub help {
    my ($program, @words) = @_;
    open my $in, '-|', $program, @words, '--help' or die "$program: $!\n";
    local $/;
    my $text = <$in>;
    close $in or die "$program @words --help failed\n";
    return $text;
}

1;
