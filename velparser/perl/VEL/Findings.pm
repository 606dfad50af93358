package VEL::Findings;

use strict;
use warnings;
use feature 'signatures';

use Exporter 'import';

use VEL::Record;

=head1 NAME

VEL::Findings - the table of the findings: identifiers, explanations, sentences

=head1 SYNOPSIS

    my $problem = problem('missing-unit', number => 5, units => 'Pa');
    my $finding = finding('/FLOW/Pressure', $problem);    # a record of VEL::Record

=head1 DESCRIPTION

Every sentence of a finding is here, those about faulty rules included. The packages
that find something name a sentence and give what varies in it; F<docs/findings.md>
and the help explain the identifiers in the words of this table. A new finding takes
one entry, and the code that finds it.

An entry is a hash:

    identifier    stays the same whatever becomes of the sentences
    group         the heading below which it is explained
    explanation   for the documents and the help, in Markdown
    sentences     by key; a key is there once in the whole table

A sentence has places, in braces. C<{near}> is a text, C<{types| or }> an array, whose
elements are joined by what follows the bar. A part in angle brackets is left out if a
place in it has no value, or an array without elements.

=cut

our @EXPORT_OK = qw(problem sentence finding compose);

my @FINDINGS = (
    {
        identifier  => 'missing-parameter',
        group       => 'Names',
        explanation => <<'END',
A parameter that the rule demands is not there. It may be demanded by a case: an
inlet needs other parameters than a wall. Add it; the editor's *Add Parameter* offers
it first.
END
        sentences => { 'missing-parameter' => 'required parameter "{name}" is missing' },
    },
    {
        identifier  => 'unknown-parameter',
        group       => 'Names',
        explanation => <<'END',
The object has no parameter of that name: a typing error, or a parameter of a case that
does not hold here. In the second case the finding says what it would need.
END
        sentences => {
            'unknown-parameter'     => '{type} has no parameter "{name}"<; did you mean {near}?>',
            'parameter-of-case'     => '{type} does not use "{name}" here<; it needs {conditions| or }>',
            'parameter-at-top'      => 'the top level holds objects only',
        },
    },
    {
        identifier  => 'missing-object',
        group       => 'Names',
        explanation => <<'END',
A block that the rule demands is not there.
END
        sentences => { 'missing-object' => 'required object {type} is missing' },
    },
    {
        identifier  => 'unknown-object',
        group       => 'Names',
        explanation => <<'END',
No rule describes an object of that type, or it has a name and should have none, or
the other way round. Types and names are compared letter by letter, capitals included.
Nothing is reported about what is inside it.
END
        sentences => {
            'unknown-object'   => 'no rule describes an object of type "{type}"<; did you mean {near}?>',
            'takes-no-name'    => '{type} takes no name; write "{type}:"',
            'needs-name'       => '{type} needs a name; write "{type}: name"',
        },
    },
    {
        identifier  => 'wrong-parent',
        group       => 'Names',
        explanation => <<'END',
The type is known, but it does not belong where it is.
END
        sentences => { 'wrong-parent' => '{type} may not stand {place}; it belongs {places| or }' },
    },
    {
        identifier  => 'too-many',
        group       => 'Names',
        explanation => <<'END',
One parent may hold only so many of this type; each one beyond has the finding. Delete
it, or move it into a file of its own.
END
        sentences => { 'too-many' => 'only {maximum} {type} may stand here; this one is beyond' },
    },

    {
        identifier  => 'not-allowed',
        group       => 'Values',
        explanation => <<'END',
A value that is not among those that the rule lists (they are compared exactly, letter
by letter), or a block whose place another value would allow.
END
        sentences => {
            'value-not-allowed'  => '"{value}" is not allowed here'
                . '<; did you mean {near}?><; allowed is {only}><; allowed are {values|, }>',
            'object-not-allowed' => '{type} is not allowed in this {parent}<; it needs {conditions| or }>',
        },
    },
    {
        identifier  => 'wrong-type',
        group       => 'Values',
        explanation => <<'END',
Text where a number must be, a number with a fraction where a whole one must be,
something that is neither yes nor no.
END
        sentences => {
            'no-number'     => '"{value}" is not a number'
                . '<; the unit stands in brackets: {number} [{unit}]>< such as 1 [{units}]>',
            'decimal-comma' => '"{value}" is not a number; the decimal sign is a point',
            'no-integer'    => '"{value}" is not a whole number such as 10',
            'no-logical'    => '"{value}" is neither Yes nor No',
            'no-object'     => 'this is a parameter, not an object',
        },
    },
    {
        identifier  => 'no-such-object',
        group       => 'Values',
        explanation => <<'END',
The value has to name an object, and there is none of that name and type. The finding
lists up to 12 of the names that there are. If the rule lists allowed values too, the
finding names both: the values come first.
END
        sentences => {
            'no-such-object'    => 'there is no {types| or } named "{value}"'
                . '<; allowed is {only}><; allowed are {values|, }><; did you mean {near}?>',
            'no-object-at-all'  => 'there is no {types| or } named "{value}"; give the name of an existing one',
            'no-object-here'    => 'there is no such object',
            'no-parameter-here' => 'there is no such parameter',
        },
    },
    {
        identifier  => 'bad-expression',
        group       => 'Values',
        explanation => <<'END',
An expression whose parentheses do not balance, that uses a name or function that is
not known, or that is given where only a plain number may be.
END
        sentences => {
            'expression'         => '"{value}" is an expression; a plain number must be given here',
            'unopened'           => '"{value}" has a ")" without a "("',
            'unclosed'           => '"{value}" lacks a ")"',
            'odd-character'      => '"{value}" holds "{character}", which no expression may hold',
            'unknown-function'   => '"{value}" uses the unknown function "{name}"<; did you mean {near}?>',
            'unknown-expression' => '"{value}" uses "{name}", which /LIBRARY/EXPRESSIONS does not define'
                . '<; did you mean {near}?>',
        },
    },
    {
        identifier  => 'too-few-entries',
        group       => 'Values',
        explanation => <<'END',
A list that is too short.
END
        sentences => {
            'too-few-entries' => '<{one} entry is given><{count} entries are given>, at least {minimum} must be',
        },
    },
    {
        identifier  => 'too-many-entries',
        group       => 'Values',
        explanation => <<'END',
A list that is too long.
END
        sentences => {
            'too-many-entries' => '<{one} entry is given><{count} entries are given>, at most {maximum} may be',
        },
    },

    {
        identifier  => 'missing-unit',
        group       => 'Units and bounds',
        explanation => <<'END',
A quantity without its unit. Only plain numbers may be bare.
END
        sentences => { 'missing-unit' => '{number} has no unit; write it as {number} [{units}]' },
    },
    {
        identifier  => 'wrong-unit',
        group       => 'Units and bounds',
        explanation => <<'END',
A unit of another quantity, one that does not exist, a bracket that does not close, or a
unit on a plain number. A time and a frequency are different quantities, and so are an
angle per second and a frequency.
END
        sentences => {
            'open-bracket'  => '"{value}" has a bracket that does not close',
            'needless-unit' => '"{value}" carries a unit, but this is a plain number; write {number}',
            'unknown-unit'  => 'the unit of {value} does not exist; '
                . 'give it in [{units}] or a unit of the same quantity',
            'other-quantity' => '{value} is in a unit of another quantity; '
                . 'give it in [{units}] or a unit of the same quantity',
        },
    },
    {
        identifier  => 'below-bound',
        group       => 'Units and bounds',
        explanation => <<'END',
A number below the lower bound of its rule, or on that bound if it is not itself allowed.
END
        sentences => {
            'below-bound'    => '{value} is below the lower bound {bound}',
            'on-lower-bound' => '{value} must be greater than the lower bound {bound}',
        },
    },
    {
        identifier  => 'above-bound',
        group       => 'Units and bounds',
        explanation => <<'END',
A number above the upper bound of its rule, or on that bound if it is not itself allowed.
END
        sentences => {
            'above-bound'    => '{value} is above the upper bound {bound}',
            'on-upper-bound' => '{value} must be less than the upper bound {bound}',
        },
    },

    {
        identifier  => 'newer-version',
        group       => 'The data as a whole',
        explanation => <<'END',
The data states a language version newer than that of the rules. It can be worked on,
but the rules may not know all that is in it.
END
        sentences => {
            'newer-version' => 'the data is in version {stated}, newer than version {version} of the rules',
        },
    },
    {
        identifier  => 'rules-in-data',
        group       => 'The data as a whole',
        explanation => <<'END',
The command data states `RULES:` itself. Rules count only in a rule library, so this block
changes no rule. It is kept like any other block. Put it into a library, or delete it.
END
        sentences => {
            'rules-in-data' => 'these rules have no effect; only a rule library can state rules',
        },
    },

    {
        identifier  => 'bad-rule',
        group       => 'Rules',
        explanation => <<'END',
Not about the data: a rule library has a fault. It is reported once, when the libraries
are read, with the path of the rule; the faulty field is passed over and everything else
works. Fix the library: the editor and `veltool` give file and line.
END
        sentences => {
            # A block, or a field of it, that may not be there.
            'unknown-rule'       => '{kind} is no rule that may stand here<; did you mean {near}?>',
            'rule-without-name'  => '{kind} needs a name after the colon',
            'unknown-field'      => '"{field}" is no field of this rule<; did you mean {near}?>',
            'missing-fields'     => 'states no "{fields|" and no "}"',
            'bad-upgrade-name'   => 'must be named "Version" and a number, such as Version 5.7',

            # The text of a field by itself.
            'bad-name'           => '"{value}" is no name',
            'bad-names'          => '"{values|", "}" are no names',
            'empty-list'         => 'names nothing',
            'no-value'           => 'names no value',
            'bad-logical'        => '"{value}" is neither Yes nor No',
            'bad-integer'        => '"{value}" is not a whole number',
            'bad-count'          => '"{value}" is not a count',
            'count-of-none'      => '{value} would allow none',
            'bad-version'        => '"{value}" is not a version such as 5.7',
            'bad-type'           => '"{value}" is no type<; did you mean {near}?><; the types are {known|, }>',
            'bad-action'         => '"{value}" is no action<; did you mean {near}?><; the actions are {known|, }>',
            'bad-rule-name'      => '"{value}" names no rule; write it as OBJECT:TYPE',
            'bad-unit'           => '"{value}" is no unit',
            'unit-in-brackets'   => '"{value}" is written without brackets here',
            'bad-quantity'       => '"{value}" is not a number with a unit',
            'undescribed-type'   => '"{values|", "}": no rule describes this type<; did you mean {near|, }?>',

            # Fields that do not go together.
            'inherits-itself'    => 'inherits itself through {rule}',
            'inherits-nothing'   => 'there is no rule {rule}<; did you mean {near}?>',
            'bound-of-other-quantity' => '{value} is not in a unit of the quantity',
            'bound-without-unit' => '{value} has no unit; write it as {value} [{units}]',
            'empty-range'        => '{upper} leaves nothing above the lower bound {lower}',
            'empty-count'        => '{maximum} is less than the {minimum} that must be there',
            'useless-field'      => 'means something for {what} only; this is a {type}'
                . '< (the same is true of "{others|" and "}")>',
            'named-twice'        => '"{name}" is required already',
            'later-upgrade'      => 'is later than Language Version {version}',

            # Rules that do not go together.
            'unlisted-parameter' => 'no list of {type} names "{name}"<; did you mean {near}?>',
            'impossible-case'    => '"{value}" is no value of "{parameter}"<; did you mean {near}?>',
            'impossible-logical' => '"{value}" is no value of "{parameter}", which is Yes or No',
            'unlisted-type'      => 'no list of {parents| or } names {type}',
            'misplaced-object'   => '{type} may not stand in {parent}; it belongs {places| or }',
        },
    },
);

# Parts of sentences that are made one by one, and what is said around a sentence.
my %PHRASES = (
    'at-top'           => 'at the top level',
    'inside'           => 'in {type}',
    'condition'        => '{parameter} = {values|, }',
    'separate-entries' => '{sentence}; the entries of a list are separated by commas',
);

my (%template, %identifier_of, %parts);
for my $entry (@FINDINGS) {
    my $sentences = $entry->{sentences};
    @template{ keys %$sentences } = values %$sentences;
    $identifier_of{$_} = $entry->{identifier} for keys %$sentences;
}
%template = (%template, %PHRASES);

=head1 FUNCTIONS

=over

=item C<entries>

All entries, in order.

=cut

sub entries () { return @FINDINGS }

=item C<phrases>

The keys of the phrases, sorted.

=cut

sub phrases () { my @keys = sort keys %PHRASES; return @keys }

=item C<problem($key, %places)>

Something that is wrong: which sentence says it, and with what. The sentence itself is
made only when it is wanted. The hash may be changed: C<within> is the key of a phrase
around the sentence, C<object> the name of an object that is meant.

=cut

sub problem ($key, %places) { return { key => $key, places => \%places } }

=item C<identifier($problem)>, C<sentence($problem)>

Its identifier and its sentence.

=cut

sub identifier ($problem) { return $identifier_of{ $problem->{key} } }

sub sentence ($problem) {
    my $text = _compose($problem->{key}, $problem->{places});
    return defined $problem->{within} ? compose($problem->{within}, sentence => $text) : $text;
}

=item C<finding($path, $problem, @related)>

The record of a finding (see L<VEL::Record>).

=cut

sub finding ($path, $problem, @related) {
    return VEL::Record::finding($path, sentence($problem), identifier($problem), @related);
}

=item C<place_name($type)>

Where an object stands: in words, for a type or C</>.

=cut

sub place_name ($type) { return $type eq '/' ? compose('at-top') : compose('inside', type => $type) }

=item C<compose($key, %places)>

A sentence or a phrase of the table as text.

=back

=cut

sub compose ($key, %places) { return _compose($key, \%places) }

sub _compose ($key, $places) {
    my $parts = $parts{$key} //= _parts($template{$key} // die "there is no sentence $key\n");
    my $text  = '';
    for my $part (@$parts) {
        my @values = @$places{ @{ $part->{names} } };
        next if $part->{optional} && grep { !defined || (ref && !@$_) } @values;
        my $joiners = $part->{joiners};
        $values[$_] = join $joiners->{$_}, @{ $values[$_] } for keys %$joiners;
        $text .= sprintf $part->{format}, @values;
    }
    return $text;
}

# A template as parts: whether one is optional, its format, the names of its places in
# order, and what joins the elements of those that are arrays.
sub _parts ($template) {
    my @parts;
    for my $part (grep { $_ ne '' } split /(<[^<>]*>)/, $template =~ s/%/%%/gr) {
        my $is_optional = $part =~ s/^<(.*)>\z/$1/s;
        my ($format, @pieces) = split /\{(\w+)(?:\|([^{}]*))?\}/, $part, -1;
        my (@names, %joiners);
        while (my ($name, $joiner, $after) = splice @pieces, 0, 3) {
            $joiners{ scalar @names } = $joiner if defined $joiner;
            push @names, $name;
            $format .= "%s$after";
        }
        push @parts, { optional => $is_optional, format => $format, names => \@names, joiners => \%joiners };
    }
    return \@parts;
}

1;
