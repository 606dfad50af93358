package VEL::Explanation;

use strict;
use warnings;
use feature 'signatures';

use Exporter qw(import);

use VEL::Path qw(split_path);
use VEL::Rules::Fields;

=head1 NAME

VEL::Explanation - describes the rules for one object or parameter

=head1 DESCRIPTION

Gives the fields as a rule writes them. A field that no rule states has its default, or is
left out if it has none. The field C<Presence>, which no rule can state, says whether the
item is required or optional in its place, and which list of which rule or case says so.

=head1 FUNCTIONS

=over

=item C<explain($model, $path)>

A list of C<[field, text, tip]> for the object or parameter at a full path, whether it
exists or not. Empty if no rule describes it. C<tip> is true for a field that the tip of a
row shows. C<$model> is the L<VEL::Model>.

=cut

our @EXPORT_OK = qw(explain);

sub explain ($model, $path) {
    my ($above, $own) = split_path($path);
    my $owner    = $above eq '/' ? undef : $model->type_of($above);
    my $variant  = $owner && $model->variant_at($above, $owner);
    my $type     = _is_parameter($model, $path) ? undef : $model->type_of($path);
    my $presence = $type ? _object_presence($type, $owner, $variant, $above) : _parameter_presence($own, $owner, $variant);
    my @fields   = $type
        ? _type_fields($type, $model->variant_at($path, $type))
        : _parameter_fields($model->parameter_at($path), $presence);
    return if !@fields;
    $presence = 'not used here: ' . _rule_name($owner) . ' does not list it' if $presence eq '' && $owner;
    return grep { defined $_->[1] && $_->[1] ne '' } @fields, [ 'Presence', $presence ];
}

sub _is_parameter ($model, $path) {
    my $database = $model->database;
    return $database->havePath($path) && !$database->isObject($path);
}

# The fields that include the lists of the cases that apply.
my %IN_TYPE = (
    'Required Parameters' => sub ($type, $variant) { return $variant->{required} },
    'Optional Parameters' => sub ($type, $variant) { return _others($variant->{order}, $variant->{required}) },
    'Required Objects'    => sub ($type, $variant) { return $variant->{required_objects} },
    'Optional Objects'    => sub ($type, $variant) {
        return _others([ sort keys %{ $variant->{objects} } ], $variant->{required_objects});
    },
);

sub _others ($all, $some) {
    my %some = map { $_ => 1 } @$some;
    return [ grep { !$some{$_} } @$all ];
}

sub _type_fields ($type, $variant) {
    return map {
        my $value = $IN_TYPE{ $_->{name} } // sub (@) { return $type->{ $_->{element} } };
        [ $_->{name}, VEL::Rules::Fields::text_of($_, $value->($type, $variant)), $_->{tip} ]
    } VEL::Rules::Fields::entries($type->{kind});
}

# The fields that apply only to some parameters.
my %IN_PARAMETER = (
    'Type'             => sub ($parameter) { return $parameter->{type} . ($parameter->{list} ? ' List' : '') },
    'Bounds Exclusive' => sub ($parameter) {
        return defined($parameter->{lower} // $parameter->{upper}) ? $parameter->{exclusive} : undef;
    },
    'Expressions' => sub ($parameter) { return $parameter->{type} eq 'Real' ? $parameter->{expressions} : undef },
);

sub _parameter_fields ($parameter, $presence) {
    return if !$parameter->{ruled} && $presence eq '';
    return map {
        my $value = $IN_PARAMETER{ $_->{name} } // sub (@) { return $parameter->{ $_->{element} } };
        [ $_->{name}, VEL::Rules::Fields::text_of($_, $value->($parameter)), $_->{tip} ]
    } VEL::Rules::Fields::entries('PARAMETER');
}

# Whether a parameter is required, and why; empty if no rule describes it.
sub _parameter_presence ($name, $type, $variant) {
    return '' if !$type;
    return _presence($type, $variant, $name, 'required', 'optional', 'Parameters')
        // ($type->{free} ? qq(optional, by "Free Parameters" of ) . _rule_name($type) : undef)
        // _inactive($type, $name, 'required', 'optional') // '';
}

sub _object_presence ($type, $owner, $variant, $above) {
    my $found = $owner
        && (_presence($owner, $variant, $type->{type}, 'required_objects', 'optional_objects', 'Objects')
        // _inactive($owner, $type->{type}, 'required_objects', 'optional_objects'));
    return $found if $found;
    return 'optional: ' . _rule_name($type) . ' has no "Parents"' if !$type->{parents};
    my $is_parent = $type->{parents}{ $above eq '/' ? '/' : $owner ? $owner->{type} : '' };
    return 'not allowed here: ' . _rule_name($owner) . ' does not list it' if $is_parent && $owner;
    return ($is_parent ? 'optional' : 'not allowed here') . ', by "Parents" of ' . _rule_name($type);
}

# Which of the lists that apply contains a name; undef if none does.
sub _presence ($type, $variant, $name, $required, $optional, $word) {
    for my $list ([ $required, 'required', "Required $word" ], [ $optional, 'optional', "Optional $word" ]) {
        my ($key, $state, $field) = @$list;
        for my $source ($type, @{ $variant->{cases} }) {
            next if !grep { $_ eq $name } @{ $source->{$key} };
            return qq($state, by "$field" of ) . _source_name($type, $source);
        }
    }
    return undef;
}

# For a name that is only in the lists of cases that do not apply.
sub _inactive ($type, $name, @lists) {
    my @cases = $type->cases_with(\@lists, $name) or return undef;
    return 'not used here, only in ' . join ' or ', map { _source_name($type, $_) } @cases;
}

sub _rule_name ($type) { return "$type->{kind}:$type->{type}" }

sub _source_name ($type, $source) {
    return _rule_name($type) if $source == $type;
    return "CASE:$source->{label} of " . _rule_name($type)
        . " ($source->{parameter} is " . join(' or ', @{ $source->{values} }) . ')';
}

=back

=cut

1;
