package VEL::Rules::Fields;

use strict;
use warnings;
use feature 'signatures';

use VEL::Value qw(split_list logical);

=head1 NAME

VEL::Rules::Fields - the table of the fields that rules may state

=head1 DESCRIPTION

All code that reads, checks, explains or documents rules takes the fields from here: the
compiler, the review, C<explain>, the tip of a row in the editor, the help pages and the
tables in F<docs/rules.md>. A new field needs one entry here, and the code that uses it.
F<t/fields.t> lists the elements too, and prints the tables for F<docs/rules.md>.

An entry is a hash:

    name      as a rule writes it
    kinds     the kinds of rule that may state it; SINGLETON has the same fields as
              OBJECT
    type      how its text is read, one of @TYPES
    meaning   a phrase for the documents and the help, in Markdown
    default   the text that applies if no rule states the field; without it the field
              then has no value
    silent    what the documents write in that case, if not the default itself
    element   where the compiled value is in VEL::Rules::Type, a case of it, or
              VEL::Rules::Parameter; without it the field is read where it is used
    only_for  'numbers' or 'lists' for a field that only such parameters may have
    own       1 if a rule does not inherit it
    tip       1 if the tip of a row in the editor shows it

The order is that in which C<explain> gives the fields. A name may have two entries,
for different kinds.

=cut

my @FIELDS = (
    { name => 'Description', kinds => [qw(RULES OBJECT CASE PARAMETER UPGRADE STEP)], type => 'text',
        element => 'description', tip => 1, meaning => 'a sentence that says what it is' },
    { name => 'Language Version', kinds => ['RULES'], type => 'version',
        meaning => 'the current version of the language' },

    { name => 'If Parameter', kinds => ['CASE'], type => 'name', element => 'parameter',
        meaning => 'the parameter that decides whether the case applies' },
    { name => 'Is One Of', kinds => ['CASE'], type => 'values', element => 'values',
        meaning => 'the values of this parameter for which the case applies' },

    { name => 'Help Topic', kinds => [qw(OBJECT PARAMETER)], type => 'text', element => 'help',
        meaning => 'the help page that the editor asks for' },
    { name => 'Inherits', kinds => ['OBJECT'], type => 'rule', element => 'inherits', own => 1,
        meaning => 'another rule, `OBJECT:OTHER` or `SINGLETON:OTHER`' },
    { name => 'Parents', kinds => ['OBJECT'], type => 'places', silent => 'anywhere', element => 'parents',
        meaning => 'types that may contain it; `/` is the top level' },
    { name => 'Required Parameters', kinds => [qw(OBJECT CASE)], type => 'names', default => '',
        silent => 'none', element => 'required', meaning => 'parameters that it must have' },
    { name => 'Optional Parameters', kinds => [qw(OBJECT CASE)], type => 'names', default => '',
        silent => 'none', element => 'optional', meaning => 'parameters that it may have' },
    { name => 'Free Parameters', kinds => ['OBJECT'], type => 'logical', default => 'No', element => 'free',
        meaning => 'parameters may have any name' },
    { name => 'Required Objects', kinds => [qw(OBJECT CASE)], type => 'types', default => '',
        silent => 'none', element => 'required_objects', meaning => 'objects that it must contain' },
    { name => 'Optional Objects', kinds => [qw(OBJECT CASE)], type => 'types', default => '',
        silent => 'none', element => 'optional_objects', meaning => 'objects that it may contain' },
    { name => 'Maximum Count', kinds => ['OBJECT'], type => 'positive', silent => 'no limit',
        element => 'maximum', meaning => 'the largest number of such objects in one parent' },

    { name => 'Type', kinds => ['PARAMETER'], type => 'type', default => 'String', element => 'type', tip => 1,
        meaning => '`String`, `Integer`, `Real`, `Logical`, each also with ` List`' },
    { name => 'Units', kinds => ['PARAMETER'], type => 'unit', silent => 'a number without a unit',
        element => 'units', only_for => 'numbers', tip => 1,
        meaning => 'the unit of the quantity; `1` for a plain number that may be given in `[%]`' },
    { name => 'Lower Bound', kinds => ['PARAMETER'], type => 'quantity', element => 'lower',
        only_for => 'numbers', tip => 1, meaning => 'the smallest value' },
    { name => 'Upper Bound', kinds => ['PARAMETER'], type => 'quantity', element => 'upper',
        only_for => 'numbers', tip => 1, meaning => 'the largest value' },
    { name => 'Bounds Exclusive', kinds => ['PARAMETER'], type => 'logical', default => 'No',
        element => 'exclusive', meaning => 'the bounds themselves are not allowed' },
    { name => 'Allowed Values', kinds => ['PARAMETER'], type => 'values', element => 'values',
        silent => 'any value', meaning => 'values are compared exactly' },
    { name => 'Allowed Objects', kinds => ['PARAMETER'], type => 'types', element => 'objects',
        meaning => 'the value names an object of one of these types' },
    { name => 'Minimum Entries', kinds => ['PARAMETER'], type => 'count', element => 'minimum',
        silent => 'no limit', only_for => 'lists', meaning => 'the smallest number of entries of a list' },
    { name => 'Maximum Entries', kinds => ['PARAMETER'], type => 'count', element => 'maximum',
        silent => 'no limit', only_for => 'lists', meaning => 'the largest number of entries of a list' },
    { name => 'Default', kinds => ['PARAMETER'], type => 'text', element => 'default',
        meaning => 'the value that the editor proposes for a new parameter' },
    { name => 'Editable', kinds => ['PARAMETER'], type => 'logical', default => 'Yes', element => 'editable',
        meaning => 'may be changed in the editor' },
    { name => 'Editable While Running', kinds => ['PARAMETER'], type => 'logical', default => 'No',
        element => 'running', meaning => 'may be changed in safe mode; `Editable = No` wins' },
    { name => 'Expert', kinds => [qw(OBJECT PARAMETER)], type => 'logical', default => 'No',
        element => 'expert', meaning => 'hidden unless expert items are shown' },
    { name => 'Expressions', kinds => ['PARAMETER'], type => 'logical', default => 'Yes',
        element => 'expressions', meaning => 'a Real may be an expression' },
    { name => 'Output Ordering Priority', kinds => ['OBJECT'], type => 'integer', default => '0',
        element => 'priority', own => 1, meaning => 'higher is saved first' },
    { name => 'Output Ordering Priority', kinds => ['PARAMETER'], type => 'integer', element => 'priority',
        meaning => 'for objects whose type has this name and no rule: higher is saved first' },

    { name => 'Action', kinds => ['STEP'], type => 'action', meaning => 'what the step does' },
    { name => 'Object Type', kinds => ['STEP'], type => 'name',
        meaning => 'the type of the objects that the step changes' },
    { name => 'Parameter', kinds => ['STEP'], type => 'name', meaning => 'the parameter that the step changes' },
    { name => 'New Name', kinds => ['STEP'], type => 'name', meaning => 'the name afterwards' },
    { name => 'Old Value', kinds => ['STEP'], type => 'text', silent => 'any value',
        meaning => 'the value that is changed' },
    { name => 'New Value', kinds => ['STEP'], type => 'text', meaning => 'the value afterwards' },
    { name => 'To Object', kinds => ['STEP'], type => 'name', meaning => 'the singleton that a parameter moves to' },
);

=head1 FUNCTIONS

=over

=item C<@TYPES>

The types of fields. C<%WORDS> has each in words, for the documents.

=cut

our %WORDS = (
    text     => 'text',
    name     => 'name',
    names    => 'list of names',
    types    => 'list of types',
    places   => 'list of types',
    values   => 'list',
    rule     => 'rule',
    logical  => 'Yes or No',
    integer  => 'whole number',
    positive => 'whole number from 1',
    count    => 'whole number from 0',
    version  => 'version',
    type     => 'type of a value',
    unit     => 'unit',
    quantity => 'number with unit',
    action   => 'action',
);
our @TYPES = sort keys %WORDS;

my $list = sub ($text) { return [ split_list($text) ] };

# How a text becomes the compiled value; those that are not here are kept as written.
my %READ = (
    names   => $list,
    types   => $list,
    values  => $list,
    places  => sub ($text) { return { map { $_ => 1 } split_list($text) } },
    logical => sub ($text) { return logical($text) ? 1 : 0 },
);

# For each kind of rule: the entries in order; by name the entry, the element, and how
# it is read; the elements of a rule that states nothing.
my (%entries, %by_name, %element_of, %reader_of, %unstated);
for my $entry (@FIELDS) {
    my ($name, $element, $default) = @$entry{qw(name element default)};
    my $reader = $READ{ $entry->{type} };
    for my $kind (map { $_ eq 'OBJECT' ? ('OBJECT', 'SINGLETON') : $_ } @{ $entry->{kinds} }) {
        push @{ $entries{$kind} }, $entry;
        $by_name{$kind}{$name} = $entry;
        next if !defined $element;
        $element_of{$kind}{$name} = $element;
        $reader_of{$kind}{$name}  = $reader if $reader;
        $unstated{$kind}{$element} = defined $default && $reader ? $reader->($default) : $default;
    }
}

=item C<kinds>

The kinds of rule that have fields, sorted.

=item C<entries($kind)>

The entries for a kind of rule, in order.

=item C<by_name($kind)>

The same as a hash by name, not to be changed.

=cut

sub kinds () { my @kinds = sort keys %entries; return @kinds }

sub entries ($kind) { return @{ $entries{$kind} // [] } }

sub by_name ($kind) { return $by_name{$kind} // {} }

=item C<compile($kind, $texts)>

A new hash with every element of that kind of rule. C<$texts> has the text of each
stated field by name; C<undef> counts as not stated. The values of the hash are not
to be changed.

=cut

sub compile ($kind, $texts) {
    my %elements = %{ $unstated{$kind} };
    my ($element_of, $reader_of) = ($element_of{$kind}, $reader_of{$kind});
    for my $name (keys %$texts) {
        my $element = $element_of->{$name} // next;
        my $text    = $texts->{$name} // next;
        my $reader  = $reader_of->{$name};
        $elements{$element} = $reader ? $reader->($text) : $text;
    }
    return \%elements;
}

=item C<text_of($entry, $value)>

A compiled value as a rule would write it; C<undef> for none.

=cut

sub text_of ($entry, $value) {
    return $value if !defined $value;
    return $value ? 'Yes' : 'No' if $entry->{type} eq 'logical';
    return join ', ', @$value if ref $value eq 'ARRAY';
    return join ', ', sort keys %$value if ref $value eq 'HASH';
    return $value;
}

=item C<document($kind)>

The rows of a Markdown table of the fields of a kind of rule, with their line ends.

=back

=cut

sub document ($kind) {
    return ("| field | value | if not stated | meaning |\n", "|---|---|---|---|\n",
        map { sprintf "| `%s` | %s | %s | %s |\n", $_->{name}, $WORDS{ $_->{type} }, _silent($_), $_->{meaning} }
            entries($kind));
}

sub _silent ($entry) { return $entry->{silent} // $entry->{default} // '' }

1;
