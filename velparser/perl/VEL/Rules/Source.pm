package VEL::Rules::Source;

use strict;
use warnings;
use feature 'signatures';

use VEL::Findings qw(compose named choice);
use VEL::Path qw(split_path split_component);
use VEL::Record qw(finding);
use VEL::Rules::Fields;
use VEL::Suggest qw(nearest);
use VEL::Units;
use VEL::Value qw(split_list logical is_integer quantity);

=head1 NAME

VEL::Rules::Source - the rules as nested blocks, without their faulty parts

=head1 DESCRIPTION

The command database has read the text already. A block is a hash:

    kind    OBJECT, SINGLETON, PARAMETER, CASE, UPGRADE, STEP; RULES on top
    name    the text after the colon; undef on top
    path    its place in the command data, for messages
    fields  name => text, as written
    blocks  the blocks inside, in order

Faulty parts are reported in C<faults> and left out of the blocks, so that everything else
works. A faulty C<Type> or C<Units> stays as C<undef>, so that the type or unit of another
rule does not replace it.

=cut

# The kinds of block that each kind may contain.
my %BLOCKS = (
    RULES     => { map { $_ => 1 } qw(OBJECT SINGLETON PARAMETER UPGRADE) },
    OBJECT    => { map { $_ => 1 } qw(PARAMETER CASE) },
    SINGLETON => { map { $_ => 1 } qw(PARAMETER CASE) },
    CASE      => { PARAMETER => 1 },
    UPGRADE   => { STEP      => 1 },
);

# The fields that a step needs for its action. VEL::Upgrade does it.
our %ACTIONS = (
    'Rename Parameter'   => [ 'Object Type', 'Parameter', 'New Name' ],
    'Remove Parameter'   => [ 'Object Type', 'Parameter' ],
    'Add Parameter'      => [ 'Object Type', 'Parameter', 'New Value' ],
    'Change Value'       => [ 'Object Type', 'Parameter', 'New Value' ],
    'Rename Object Type' => [ 'Object Type', 'New Name' ],
    'Remove Object'      => ['Object Type'],
    'Move Parameter'     => [ 'Object Type', 'Parameter', 'To Object' ],
);

our @TYPES = map { ($_, "$_ List") } qw(String Integer Real Logical);
my %TYPE = map { $_ => 1 } @TYPES;

=head1 FUNCTIONS

=over

=item C<read_tree($database)>

The blocks of F</RULES> in a command database, stated by libraries or data.

=item C<block($component, $path)>

An empty block: C<$component> is the last part of its path.

=back

=cut

# Without recursion, because blocks may nest thousands of levels deep.
sub read_tree ($database) {
    my $top  = block('RULES', '/RULES');
    my @open = $top;
    while (my $block = pop @open) {
        my ($path, $fields) = @$block{qw(path fields)};
        next if $database->getChildParamList($path, \my @names);
        $database->getStringValue("$path/$_", \$fields->{$_}) for @names;
        $database->getChildObjectList($path, \my @components);
        push @open, @{ $block->{blocks} } = map { block($_, "$path/$_") } @components;
    }
    return $top;
}

sub block ($component, $path) {
    my ($kind, $name) = split_component($component);
    return { kind => $kind, name => $name, path => $path, fields => {}, blocks => [] };
}

=head1 METHODS

=over

=item C<< VEL::Rules::Source->new($top) >>

Checks the blocks below F</RULES>. It keeps and changes them.

=cut

sub new ($class, $top) {
    my $self = bless { top => $top, faults => [], unsound => {} }, $class;
    my @named = grep { defined $_->{name} } @{ $self->{top}{blocks} };
    $self->{types} = { map { $_->{name} => 1 } grep { _describes_type($_->{kind}) } @named };
    $self->{hints} = VEL::Suggest->new([ sort keys %{ $self->{types} } ]);
    # A rule whose kind is misspelt is reported. Other rules may still name its type.
    my @kinds = sort keys %{ $BLOCKS{RULES} };
    $self->{misspelt} = { map { $_->{name} => 1 } grep { _describes_type(nearest($_->{kind}, @kinds) // '') } @named };
    delete @{ $self->{misspelt} }{ keys %{ $self->{types} } };
    $self->_check($self->{top});
    return $self;
}

=item C<top>, C<faults>

The outermost block; the faults, as findings (see L<VEL::Record>).

=cut

sub top    ($self) { return $self->{top} }
sub faults ($self) { return @{ $self->{faults} } }

=item C<fault($path, $sentence)>

Adds a fault that later code has found.

=cut

sub fault ($self, $path, $sentence) {
    push @{ $self->{faults} }, finding($path, $sentence, 'bad-rule');
    for (my $at = $path; $at ne '/' && !$self->{unsound}{$at}++;) {
        ($at) = split_path($at);
    }
    return;
}

=item C<is_sound($path)>

Whether no fault has been found at the path or below it.

=cut

sub is_sound ($self, $path) { return !$self->{unsound}{$path} }

=item C<is_misspelt($type)>

Whether the only rule of a type has a misspelt kind, such as C<Object>.

=cut

sub is_misspelt ($self, $type) { return exists $self->{misspelt}{$type} }

sub _describes_type ($kind) { return $kind =~ /^(?:OBJECT|SINGLETON)\z/ }

sub _check ($self, $block) {
    $self->_check_fields($block);
    my @kept;
    for my $inner (@{ $block->{blocks} }) {
        if (!$BLOCKS{ $block->{kind} }{ $inner->{kind} }) {
            my @known = sort keys %{ $BLOCKS{ $block->{kind} } };
            $self->fault($inner->{path},
                compose('unknown-rule', kind => $inner->{kind}, choice(nearest($inner->{kind}, @known), @known)));
        }
        elsif (!defined $inner->{name}) {
            $self->fault($inner->{path}, compose('rule-without-name', kind => $inner->{kind}));
        }
        else {
            $self->_check($inner);
            push @kept, $inner if $self->_is_whole($inner, $block);
        }
    }
    $block->{blocks} = \@kept;
    return;
}

# The check of the text, by type of field.
my %CHECK;

sub _check_fields ($self, $block) {
    my $known = VEL::Rules::Fields::by_name($block->{kind});
    for my $field (sort keys %{ $block->{fields} }) {
        my $entry = $known->{$field};
        if (!$entry) {
            my $near = nearest($field, sort keys %$known);
            $self->fault("$block->{path}/$field",
                compose('unknown-field', kind => $block->{kind}, field => $field, near => $near));
            delete $block->{fields}{$field};
            next;
        }
        my $type  = $entry->{type};
        my $check = $CHECK{$type} //= $self->can("_field_$type");
        my $fault = $self->$check(\$block->{fields}{$field});
        next if !defined $fault;
        $self->fault("$block->{path}/$field", $fault);
        next if $type =~ /^(?:types|places|names)$/ && $block->{fields}{$field} =~ /\S/;
        if ($type =~ /^(?:type|unit)$/) { $block->{fields}{$field} = undef }
        else                            { delete $block->{fields}{$field} }
    }
    return;
}

=item C<lacks($block, @fields)>

Reports a fault if the block does not state all of these fields, unless another fault
already explains this. True if a field is missing.

=cut

sub lacks ($self, $block, @needed) {
    my @missing = grep { !defined $block->{fields}{$_} } @needed;
    my @unreported = grep { $self->is_sound("$block->{path}/$_") } @missing;
    $self->fault($block->{path}, compose('missing-fields', named(@unreported))) if @unreported;
    return scalar @missing;
}

=item C<@CONDITION>

The fields that a case needs.

=cut

our @CONDITION = ('If Parameter', 'Is One Of');

# A block without a field that it needs is left out. A case may inherit its condition, so
# the cases of an heir are checked later.
sub _is_whole ($self, $block, $outer) {
    my $fields = $block->{fields};
    my @needed = $block->{kind} eq 'CASE' ? (defined $outer->{fields}{'Inherits'} ? () : @CONDITION)
        : $block->{kind} eq 'STEP' ? ('Action', @{ $ACTIONS{ $fields->{Action} // '' } // [] })
        : ();
    my $lacks = $self->lacks($block, @needed);
    if ($block->{kind} eq 'UPGRADE' && $block->{name} !~ /^Version\s+[0-9]+(?:\.[0-9]+)*$/) {
        $self->fault($block->{path}, compose('bad-upgrade-name', name => $block->{name}));
        return 0;
    }
    return !$lacks;
}

# Each of these takes a reference to the text of a field of its type, and returns a sentence
# about its fault, or undef. Faulty entries are removed from lists of types and names.

sub _field_text ($self, $text) { return undef }

# What the command database accepts as a type or name.
my $NAME = qr/^[A-Za-z_%][A-Za-z0-9 .\[\]_{|}]*\z/;

sub _field_name ($self, $text) { return $$text =~ $NAME ? undef : compose('bad-name', one => $$text) }

sub _field_names ($self, $text) {
    return compose('empty-list') if $$text !~ /\S/;
    my @wrong = grep { $_ !~ $NAME } split_list($$text);
    $$text = join ', ', grep { $_ =~ $NAME } split_list($$text);
    return undef if !@wrong;
    return compose('bad-name', named(@wrong));
}

sub _field_values ($self, $text) { return $$text =~ /\S/ ? undef : compose('empty-list') }

sub _field_logical ($self, $text) {
    return defined logical($$text) ? undef : compose('bad-logical', value => $$text);
}

sub _field_integer ($self, $text) {
    return is_integer($$text) ? undef : compose('bad-integer', value => $$text);
}

sub _field_positive ($self, $text) {
    return $self->_field_count($text) // ($$text > 0 ? undef : compose('count-of-none', value => $$text));
}

sub _field_count ($self, $text) {
    return is_integer($$text) && $$text >= 0 ? undef : compose('bad-count', value => $$text);
}

sub _field_version ($self, $text) {
    return $$text =~ /^[0-9]+(?:\.[0-9]+)*$/ ? undef : compose('bad-version', value => $$text);
}

sub _field_type ($self, $text) {
    return $TYPE{$$text} ? undef : compose('bad-type', value => $$text, choice(nearest($$text, @TYPES), @TYPES));
}

sub _field_action ($self, $text) {
    my @known = sort keys %ACTIONS;
    return $ACTIONS{$$text} ? undef : compose('bad-action', value => $$text, choice(nearest($$text, @known), @known));
}

sub _field_rule ($self, $text) {
    return $$text =~ /^(?:OBJECT|SINGLETON)\s*:\s*\S/ ? undef
        : compose('bad-rule-name', value => $$text);
}

sub _field_unit ($self, $text) {
    return compose('unit-in-brackets', value => $$text) if $$text =~ /[\[\]]/;
    return VEL::Units::load() || VEL::Units::exists_unit($$text) ? undef : compose('bad-unit', value => $$text);
}

sub _field_quantity ($self, $text) {
    my ($number, $unit) = quantity($$text);
    return compose('bad-quantity', value => $$text) if !defined $number || ref $unit;
    return defined $unit ? $self->_field_unit(\$unit) : undef;
}

sub _field_types ($self, $text) { return $self->_known_types($text, {}) }

sub _field_places ($self, $text) { return $self->_known_types($text, { '/' => 1 }) }

sub _known_types ($self, $text, $also) {
    return compose('empty-list') if $$text !~ /\S/;
    my (@known, @unknown);
    for my $type (split_list($$text)) {
        push @{ $self->_is_known_type($type) || $also->{$type} ? \@known : \@unknown }, $type;
    }
    $$text = join ', ', @known;
    return undef if !@unknown;
    my @near = grep { defined } map { $self->near_type($_) } @unknown;
    return compose('undescribed-type', values => \@unknown, near => \@near);
}

=item C<near_type($word)>

The known type nearest to a misspelt one, or C<undef>.

=back

=cut

sub near_type ($self, $word) { return $self->{hints}->find($word =~ s/^(?:OBJECT|SINGLETON)\s*:\s*//r) }

sub _is_known_type ($self, $type) {
    return $self->{types}{$type} || $self->{misspelt}{$type} || _is_built_in($type);
}

sub _is_built_in ($type) { return $type =~ /^(?:LANGUAGE|LIBRARY|EXPRESSIONS)$/ }

1;
