package VEL::Path;

use strict;
use warnings;
use feature 'signatures';

use Exporter 'import';

=head1 NAME

VEL::Path - takes paths apart

=head1 DESCRIPTION

Paths are in normal form, as C<cleanPath> of L<VEL::Parser::Lite> gives them:
F</FLOW/DOMAIN:Duct/Kind>.

=head1 FUNCTIONS

=over

=item C<split_path($path)>

The path of the parent (C</> for the top level) and the last component.

=cut

our @EXPORT_OK = qw(split_path last_component split_component name_at);

sub split_path ($path) {
    my $slash = rindex $path, '/';
    return (substr($path, 0, $slash) || '/', substr $path, $slash + 1);
}

=item C<last_component($path)>

The last component; empty for C</>.

=cut

sub last_component ($path) { return substr $path, 1 + rindex $path, '/' }

=item C<split_component($component)>

The type and the name of C<TYPE:Name>. Without a colon, the component and C<undef>: it is
the type of a singleton, or the name of a parameter.

=cut

sub split_component ($component) {
    my $colon = index $component, ':';
    return ($component, undef) if $colon < 0;
    return (substr($component, 0, $colon), substr $component, $colon + 1);
}

=item C<name_at($path)>

The name by which values refer to what is at a path: that of a singleton is its type.

=back

=cut

sub name_at ($path) {
    my ($type, $name) = split_component(last_component($path));
    return $name // $type;
}

1;
