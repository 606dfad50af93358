package VEL::Record;

use strict;
use warnings;
use feature 'signatures';

use Exporter 'import';

use VEL::Path qw(last_component);

=head1 NAME

VEL::Record - the records that Perl code gives to C++, and their texts

=head1 SYNOPSIS

    my $finding = finding('/FLOW/Kind', '"x" is not allowed here', 'not-allowed');
    print finding_line($finding), "\n";    # /FLOW/Kind: "x" is not allowed here [not-allowed]

=head1 DESCRIPTION

Packages work with records, which are plain hashes. Only this package makes texts from
them; no code makes records from these texts.

A I<finding> has

    path          what it is about
    identifier    the stable word for its kind, see docs/findings.md
    text          the sentence
    related       array: the paths of other items that it concerns, such as the
                  parameter whose value makes another one required

A I<change>, made by an upgrade, has

    kind          a key of %CHANGE
    path          of the item as it was before this change
    new_path      where it is now: only if it was renamed or moved
    old, new      the values: only if the change is about a value

A I<field> of a rule has C<name> and C<text>, and a true C<tip> if the tip of a row in the
editor shows it.

=head1 FUNCTIONS

=over

=item C<finding($path, $text, $identifier, @related)>

A finding.

=cut

our @EXPORT_OK = qw(finding finding_line finding_lines change_text change_line field_line);

sub finding ($path, $text, $identifier, @related) {
    return { path => $path, text => $text, identifier => $identifier, related => \@related };
}

=item C<finding_line($finding)>, C<finding_lines(@findings)>

C<PATH: sentence [identifier]>; one line for each finding, without a line end after the last.

=cut

sub finding_line ($finding) { return "$finding->{path}: $finding->{text} [$finding->{identifier}]" }

sub finding_lines (@findings) { return join "\n", map { finding_line($_) } @findings }

=item C<change_text($change)>, C<change_line($change)>

The change in words, and C<PATH: change>.

=cut

our %CHANGE = (
    'rename-parameter' => sub ($change) { return sprintf 'renamed to "%s"', last_component($change->{new_path}) },
    'remove-parameter' => sub ($change) { return qq(removed; it was "$change->{old}") },
    'add-parameter'    => sub ($change) { return qq(added with the value "$change->{new}") },
    'change-value'     => sub ($change) { return qq(changed from "$change->{old}" to "$change->{new}") },
    'move-parameter'   => sub ($change) { return "moved to $change->{new_path}" },
    'rename-object'    => sub ($change) { return 'renamed to ' . last_component($change->{new_path}) },
    'remove-object'    => sub ($change) { return 'removed with everything in it' },
    'set-version'      => sub ($change) {
        return defined $change->{old} ? "changed from $change->{old} to $change->{new}" : "set to $change->{new}";
    },
);

sub change_text ($change) { return $CHANGE{ $change->{kind} }->($change) }

sub change_line ($change) { return "$change->{path}: " . change_text($change) }

=item C<field_line($field)>

C<Name = text>, as a rule would write it.

=back

=cut

sub field_line ($field) { return "$field->{name} = $field->{text}" }

1;
