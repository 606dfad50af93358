package VEL::Rules;

use strict;
use warnings;
use feature 'signatures';

use VEL::Record qw(finding_line);
use VEL::Findings qw(compose);
use VEL::Rules::Fields;
use VEL::Rules::Review;
use VEL::Rules::Source;
use VEL::Rules::Type;

=head1 NAME

VEL::Rules - the rules of the libraries, compiled once

=head1 SYNOPSIS

    my $rules = VEL::Rules->new(VEL::Rules::Source::read_tree($database));
    print "$_\n" for $rules->faults;
    my $type = $rules->type('OBJECT', 'BOUNDARY');

=head1 DESCRIPTION

Contains everything under F</RULES> as Perl hashes. It knows types, names and values.
L<VEL::Model> answers questions about paths of the command data.

Three types exist even if no library describes them, because the program itself uses
them: C<LANGUAGE> (the version of the data), C<LIBRARY>
and its C<EXPRESSIONS>.

=cut

my %BUILT_IN = (
    LANGUAGE    => { 'Parents' => '/', 'Optional Parameters' => 'Version' },
    LIBRARY     => { 'Parents' => '/', 'Optional Objects' => 'EXPRESSIONS' },
    EXPRESSIONS => { 'Parents' => 'LIBRARY', 'Free Parameters' => 'Yes' },
);

=head1 METHODS

=over

=item C<< VEL::Rules->new($top) >>

Compiles the blocks below F</RULES> (see L<VEL::Rules::Source>), which must not be used
afterwards. Without blocks the rules have no types.

=cut

sub new ($class, $top) {
    my $source = VEL::Rules::Source->new($top);
    my $self   = bless {
        source  => $source,
        version => $source->top->{fields}{'Language Version'},
        raw     => { OBJECT => {}, SINGLETON => {} },
        types   => { OBJECT => {}, SINGLETON => {} },
        general => {},
        upgrades => [],
    }, $class;
    $self->_collect($source->top);
    $self->{empty} = !%{ $self->{raw}{OBJECT} } && !%{ $self->{raw}{SINGLETON} };
    $self->_add_built_in if !$self->{empty};
    $self->_resolve_all;
    $source->fault(@$_) for VEL::Rules::Review->new($self, $source)->faults;
    return $self;
}

=item C<faults>, C<fault_records>

The faults of the rules, one line for each; the same as findings (see L<VEL::Record>).

=cut

sub faults ($self) { return map { finding_line($_) } $self->fault_records }

sub fault_records ($self) { return $self->{source}->faults }

=item C<is_empty>

Whether the rules describe no type. Then data has no findings.

=cut

sub is_empty ($self) { return $self->{empty} }

=item C<version>

The language version of the libraries, or C<undef>.

=cut

sub version ($self) { return $self->{version} }

=item C<upgrades>

The blocks of the upgrades (see L<VEL::Rules::Source>).

=cut

sub upgrades ($self) { return @{ $self->{upgrades} } }

=item C<type($kind, $type)>

The L<VEL::Rules::Type>, or C<undef>. C<$kind> is C<OBJECT> or C<SINGLETON>.

=cut

sub type ($self, $kind, $type) { return $self->{types}{$kind}{$type} }

=item C<types>

All of them: objects, then singletons, each by name.

=cut

sub types ($self) {
    return map { my $of = $self->{types}{$_}; map { $of->{$_} } sort keys %$of } qw(OBJECT SINGLETON);
}

=item C<general($name)>

The L<VEL::Rules::Parameter> that applies to a name everywhere.

=cut

sub general ($self, $name) {
    return VEL::Rules::Parameter->new($name) if !$self->{general}{$name};
    return $self->{general_parameters}{$name}
        //= VEL::Rules::Parameter->new($name, $self->{general}{$name});
}

=back

=cut

sub _collect ($self, $top) {
    for my $block (@{ $top->{blocks} }) {
        if ($block->{kind} eq 'PARAMETER') {
            $self->{general}{ $block->{name} } = $block->{fields};
        }
        elsif ($block->{kind} eq 'UPGRADE') {
            push @{ $self->{upgrades} }, $block;
        }
        else {
            $self->{raw}{ $block->{kind} }{ $block->{name} } = _raw_rule($block);
        }
    }
    return;
}

sub _raw_rule ($block) {
    my %rule = (path => $block->{path}, fields => $block->{fields}, parameters => {}, cases => []);
    for my $inner (@{ $block->{blocks} }) {
        if ($inner->{kind} eq 'PARAMETER') {
            $rule{parameters}{ $inner->{name} } = [ $inner->{fields} ];
        }
        else {
            push @{ $rule{cases} }, { %{ _raw_rule($inner) }, label => $inner->{name} };
        }
    }
    return \%rule;
}

sub _add_built_in ($self) {
    for my $type (keys %BUILT_IN) {
        my $component = "SINGLETON:$type";
        my $block     = VEL::Rules::Source::block($component, "/RULES/$component");
        $block->{fields} = { %{ $BUILT_IN{$type} } };
        $self->{raw}{SINGLETON}{$type} //= _raw_rule($block);
    }
    return;
}

sub _resolve_all ($self) {
    for my $kind (qw(OBJECT SINGLETON)) {
        for my $type (sort keys %{ $self->{raw}{$kind} }) {
            my $rule = $self->_inherit($self->{raw}{$kind}{$type}, {});
            $rule->{cases} = [ grep { $self->_is_whole_case($_) } @{ $rule->{cases} } ];
            $self->{types}{$kind}{$type}
                = VEL::Rules::Type->new($kind, $type, $rule, $self->{general});
        }
    }
    return;
}

# Whether a case has a condition, either its own or an inherited one.
sub _is_whole_case ($self, $case) {
    return $case->{whole} //= $self->{source}->lacks($case, @VEL::Rules::Source::CONDITION) ? 0 : 1;
}

# The rule with the fields that it inherits. $passed has the paths of the rules on the way here.
sub _inherit ($self, $rule, $passed) {
    no warnings 'recursion';    # as deep as rules inherit each other
    return $rule->{resolved} if $rule->{resolved};
    my $from = $rule->{fields}{'Inherits'} // return $rule;
    my ($kind, $type) = $from =~ /^(\w+)\s*:\s*(.*?)\s*$/;
    my $base = $self->{raw}{$kind}{$type};
    my $at   = "$rule->{path}/Inherits";
    local $passed->{ $rule->{path} } = 1;
    if (!$base || $passed->{ $base->{path} }) {
        delete $rule->{fields}{'Inherits'};
        my $near = $base ? undef : $self->{source}->near_type($type);
        $self->{source}->fault($at, compose($base ? 'inherits-itself' : 'inherits-nothing', rule => $from, near => $near));
        return $rule;
    }
    return $rule->{resolved} = _combine($self->_inherit($base, $passed), $rule);
}

my @OWN = map { $_->{name} } grep { $_->{own} } VEL::Rules::Fields::entries('OBJECT');

sub _combine ($base, $rule) {
    my %passed_on = %{ $base->{fields} };
    delete @passed_on{@OWN};
    return {
        path       => $rule->{path},
        label      => $rule->{label},
        fields     => { %passed_on, %{ $rule->{fields} } },
        parameters => _combine_parameters($base->{parameters}, $rule->{parameters}),
        cases      => _combine_cases($base->{cases}, $rule->{cases}),
    };
}

sub _combine_parameters ($base, $own) {
    return $base if !%$own;
    my %both = %$base;
    $both{$_} = [ { map { %$_ } @{ $both{$_} // [] }, @{ $own->{$_} } } ] for keys %$own;
    return \%both;
}

# Cases with the same label are one case.
sub _combine_cases ($base, $own) {
    my %own = map { $_->{label} => $_ } @$own;
    my @cases;
    for my $case (@$base) {
        my $again = delete $own{ $case->{label} };
        push @cases, $again ? _combine($case, $again) : $case;
    }
    return [ @cases, grep { $own{ $_->{label} } } @$own ];
}

1;
