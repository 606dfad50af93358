package VEL::Findings;

use strict;
use warnings;
use feature 'signatures';

use Exporter 'import';
use List::Util qw(first);

use VEL::Record;

=head1 NAME

VEL::Findings - the table of the findings: identifiers, explanations, sentences

=head1 SYNOPSIS

    my $problem = problem('missing-unit', number => 5, units => 'Pa');
    my $finding = finding('/FLOW/Pressure', $problem);    # a record of VEL::Record

=head1 DESCRIPTION

Every sentence of a finding is here, also those about faulty rules. A package that finds
something gives the key of a sentence and the texts that vary in it. F<docs/findings.md>
and the help explain the identifiers with the explanations of this table. A new finding
needs one entry here, and the code that finds it.

A sentence says what is wrong, then what to do.

An entry is a hash:

    identifier    never changes, even if the sentences do
    group         the heading under which the documents explain it
    explanation   for the documents and the help, in Markdown
    sentences     by key; each key occurs once in the whole table

A sentence has placeholders in braces. C<{near}> is replaced by a text, C<{types| or }> by
the elements of an array, joined by the text after the bar. A part in angle brackets has
alternatives, separated by C<//>. The first one whose placeholders all have values is
used; an array without elements is not a value. If there is none, the part is left out.

=cut

our @EXPORT_OK = qw(problem sentence finding compose counted named choice);

my @FINDINGS = (
    {
        identifier  => 'missing-parameter',
        group       => 'Names',
        explanation => <<'END',
A parameter that the rule requires is missing. A case may require it: an inlet needs
other parameters than a wall. Add it; *Add Parameter* in the editor lists it first.
END
        sentences => { 'missing-parameter' => 'required parameter "{name}" is missing' },
    },
    {
        identifier  => 'unknown-parameter',
        group       => 'Names',
        explanation => <<'END',
The object has no parameter of this name. Either the name is misspelt, or the parameter
belongs to a case that does not apply here; then the finding says when it is allowed.
END
        sentences => {
            'unknown-parameter' => '{type} has no parameter "{name}"'
                . '<; did you mean {near}?//; correct the name or remove the parameter>',
            'parameter-of-case' => '"{name}" is only allowed when {conditions| or }',
            'parameter-at-top'  => '"{name}" is not allowed at the top level; move it into an object',
        },
    },
    {
        identifier  => 'missing-object',
        group       => 'Names',
        explanation => <<'END',
An object that the rule requires is missing.
END
        sentences => { 'missing-object' => 'required object {type} is missing' },
    },
    {
        identifier  => 'unknown-object',
        group       => 'Names',
        explanation => <<'END',
No rule describes an object of this type, or the object has a name and must not have one,
or it has no name and must have one. Types and names must match exactly, also in upper
and lower case. Nothing is reported about what is inside the object.
END
        sentences => {
            'unknown-object' => 'Unknown object type "{type}"'
                . '<; did you mean {near}?//; correct the type or remove the object>',
            'takes-no-name'  => '{type} must not have a name; write "{type}:"',
            'needs-name'     => '{type} needs a name; write "{type}: name"',
        },
    },
    {
        identifier  => 'wrong-parent',
        group       => 'Names',
        explanation => <<'END',
The type is known, but it is not allowed in this place.
END
        sentences => { 'wrong-parent' => '{type} is not allowed {place}; move it to {places| or }' },
    },
    {
        identifier  => 'too-many',
        group       => 'Names',
        explanation => <<'END',
A parent may contain only a limited number of objects of this type. Each object beyond the
limit has this finding. Remove it, or move it to a file of its own.
END
        sentences => {
            'too-many' => 'Only <{one} {type} is//{several} {type} objects are> allowed here; remove this one',
        },
    },

    {
        identifier  => 'not-allowed',
        group       => 'Values',
        explanation => <<'END',
The value is not one of those that the rule lists (the text must match exactly), or the
object is only allowed when a parameter of its parent has another value.
END
        sentences => {
            'value-not-allowed'  => '"{value}" is not allowed here'
                . '<; did you mean {near}?//; use {only}//; use one of {known|, }>',
            'object-not-allowed' => '<{type} is only allowed when its {parent} has {conditions| or }'
                . '//{type} is not allowed in this {parent}; remove it>',
        },
    },
    {
        identifier  => 'wrong-type',
        group       => 'Values',
        explanation => <<'END',
The value is a text instead of a number, a number with a fraction instead of a whole
number, or neither yes nor no.
END
        sentences => {
            'no-number'     => '"{value}" is not a number; use a value such as <1 [{units}]//1.5>',
            'no-brackets'   => '"{value}" has its unit without brackets; write {number} [{unit}]',
            'decimal-comma' => '"{value}" is not a number; use a decimal point',
            'no-integer'    => '"{value}" is not a whole number; use a value such as 10',
            'no-logical'    => '"{value}" is not a logical value; use Yes or No',
            'no-object'     => 'This is a parameter, not an object; give the path of an object',
        },
    },
    {
        identifier  => 'no-such-object',
        group       => 'Values',
        explanation => <<'END',
The value must be the name of an object, but there is no object with this name and type.
The finding lists up to 12 names that exist. If the rule also lists allowed values, the
finding lists them first.
END
        sentences => {
            'no-such-object'    => 'There is no {types| or } named "{value}"'
                . '<; use {only}//; use one of {known|, }><; did you mean {near}?>',
            'no-object-at-all'  => 'There is no {types| or } named "{value}"; add it',
            'no-object-here'    => 'There is no object with this path; correct the path',
            'no-parameter-here' => 'There is no parameter with this path; correct the path',
        },
    },
    {
        identifier  => 'bad-expression',
        group       => 'Values',
        explanation => <<'END',
The parentheses of an expression do not match, the expression uses an unknown name or
function, or only a plain number is allowed here.
END
        sentences => {
            'expression'         => '"{value}" is an expression, which is not allowed here; use a plain number',
            'unopened'           => '"{value}" has a ")" without a "("; remove it or add "("',
            'unclosed'           => '"{value}" has a "(" without a ")"; add ")"',
            'odd-character'      => '"{value}" contains "{character}", which is not allowed in an expression; remove it',
            'unknown-function'   => 'Unknown function "{name}" in "{value}"'
                . '<; did you mean {near}?//; use one of {known|, }>',
            'unknown-expression' => 'Unknown name "{name}" in "{value}"'
                . '<; did you mean {near}?//; define it in /LIBRARY/EXPRESSIONS>',
        },
    },
    {
        identifier  => 'too-few-entries',
        group       => 'Values',
        explanation => <<'END',
The list has fewer entries than the rule requires.
END
        sentences => {
            'too-few-entries' => 'Expected at least <{one} entry//{several} entries>, found {count}',
        },
    },
    {
        identifier  => 'too-many-entries',
        group       => 'Values',
        explanation => <<'END',
The list has more entries than the rule allows.
END
        sentences => {
            'too-many-entries' => 'Expected at most <{one} entry//{several} entries>, found {count}',
        },
    },

    {
        identifier  => 'missing-unit',
        group       => 'Units and bounds',
        explanation => <<'END',
A quantity has no unit. Only plain numbers need no unit.
END
        sentences => { 'missing-unit' => '{number} has no unit; write it as {number} [{units}]' },
    },
    {
        identifier  => 'wrong-unit',
        group       => 'Units and bounds',
        explanation => <<'END',
The unit has another dimension, or it is unknown, or its bracket is not closed, or the
value is a plain number and must not have a unit. A time and a frequency have different dimensions, and so do an angle per
second and a frequency.
END
        sentences => {
            'open-bracket'   => '"{value}" has no closing bracket; add "]"',
            'needless-unit'  => 'Unit [{unit}] is not allowed for a plain number; write {number}',
            'unknown-unit'   => 'Unknown unit [{unit}]; use [{units}] or a compatible unit',
            'other-quantity' => 'Unit [{unit}] has the wrong dimension; use [{units}] or a compatible unit',
        },
    },
    {
        identifier  => 'below-bound',
        group       => 'Units and bounds',
        explanation => <<'END',
The number is below the lower bound of its rule, or equal to it if the bound itself is not
allowed.
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
The number is above the upper bound of its rule, or equal to it if the bound itself is not
allowed.
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
The data states a language version newer than that of the rules. You can work on it, but
the rules may not know everything in it.
END
        sentences => {
            'newer-version' => 'Version {stated} is newer than version {version} of the rules; use newer rule libraries',
        },
    },
    {
        identifier  => 'rules-in-data',
        group       => 'The data as a whole',
        explanation => <<'END',
The command data contains a `RULES:` block. Only the rules of a rule library have an
effect, so this block changes no rule. It is kept like any other block. Move it to a
library, or delete it.
END
        sentences => {
            'rules-in-data' => 'Rules in command data have no effect; move them to a rule library',
        },
    },

    {
        identifier  => 'bad-rule',
        group       => 'Rules',
        explanation => <<'END',
This finding is about a rule library, not about the data. It is reported once, when the
libraries are read, with the path of the rule. The faulty field is ignored and everything
else works. Fix the library: the editor and `veltool` give file and line.
END
        sentences => {
            # A block, or a field of it, that is not allowed.
            'unknown-rule'       => '"{kind}" is not allowed here'
                . '<; did you mean {near}?//; use {only}//; use one of {known|, }//; remove it>',
            'rule-without-name'  => '{kind} needs a name; write "{kind}: name"',
            'unknown-field'      => '{kind} has no field "{field}"'
                . '<; did you mean {near}?//; correct the name or remove the field>',
            'missing-fields'     => '<"{one}" is missing//"{several|" and "}" are missing>',
            'bad-upgrade-name'   => '"{name}" is not the name of an upgrade; use a name such as Version 5.7',

            # The text of a field by itself.
            'bad-name'           => '<"{one}" is not a valid name//"{several|", "}" are not valid names>'
                . '; use letters, digits and blanks, and begin with a letter',
            'empty-list'         => 'The list is empty; add an entry or remove the field',
            'bad-logical'        => '"{value}" is not a logical value; use Yes or No',
            'bad-integer'        => '"{value}" is not a whole number; use a value such as 10',
            'bad-count'          => '"{value}" is not a count; use 0 or a positive whole number',
            'count-of-none'      => '{value} allows no objects; use 1 or more',
            'bad-version'        => '"{value}" is not a version; use a value such as 5.7',
            'bad-type'           => 'Unknown type "{value}"<; did you mean {near}?//; use one of {known|, }>',
            'bad-action'         => 'Unknown action "{value}"<; did you mean {near}?//; use one of {known|, }>',
            'bad-rule-name'      => '"{value}" is not the name of a rule; write OBJECT:TYPE or SINGLETON:TYPE',
            'bad-unit'           => 'Unknown unit "{value}"; use a unit such as kg m^-3',
            'unit-in-brackets'   => '"{value}" has brackets; write the unit without them',
            'bad-quantity'       => '"{value}" is not a number; use a value such as 10 or 1 [Pa]',
            'undescribed-type'   => 'Unknown object type "{values|", "}"'
                . '<; did you mean {near|, }?//; correct the name or add a rule for it>',

            # Fields that contradict each other.
            'inherits-itself'    => 'The rule inherits itself through {rule}; inherit another rule',
            'inherits-nothing'   => 'Unknown rule {rule}<; did you mean {near}?//; correct the name or add the rule>',
            'bound-of-other-quantity' => 'Unit [{unit}] has the wrong dimension; use [{units}] or a compatible unit',
            'bound-without-unit' => '{value} has no unit; write it as {value} [{units}]',
            'empty-range'        => 'No value is allowed between the lower bound {lower} and the upper bound {upper}; '
                . 'correct one of them',
            'empty-count'        => '{maximum} is less than Minimum Entries = {minimum}; correct one of them',
            'useless-field'      => '<"{one}" is only allowed for {what}, not for {type}; remove it'
                . '//"{several|" and "}" are only allowed for {what}, not for {type}; remove them> or change the type',
            'named-twice'        => '"{name}" is already required; remove it from this list',
            'later-upgrade'      => '{name} is later than Language Version {version}; correct one of them',

            # Rules that contradict each other.
            'unlisted-parameter' => '"{name}" is not listed in {type}'
                . '<; did you mean {near}?//; add it to Required Parameters or Optional Parameters>',
            'impossible-case'    => '"{value}" is not an allowed value of "{parameter}"'
                . '<; did you mean {near}?//; use {only}//; use one of {known|, }>',
            'impossible-logical' => '"{value}" is not an allowed value of "{parameter}"; use Yes or No',
            'unlisted-type'      => '{type} is not listed in {parents| or }; '
                . 'add it to Required Objects or Optional Objects there',
            'misplaced-object'   => 'Parents of {type} does not list {parent}; add it there or remove {type} here',
        },
    },
);

# Parts of sentences that are composed separately, and a text around a sentence.
my %PHRASES = (
    'at-top'           => 'at the top level',
    'inside'           => 'in {type}',
    'top'              => 'the top level',
    'condition'        => '{parameter} = {values|, }',
    'separate-entries' => '{sentence}; separate the entries with commas',
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

=item C<problem($key, %values)>

Something that is wrong: the key of a sentence and the values of its placeholders. The
sentence itself is composed only when it is needed. The caller may add to the hash:
C<within> is the key of a phrase around the sentence, C<object> the name of the object
that is probably meant.

=cut

sub problem ($key, %values) { return { key => $key, values => \%values } }

=item C<identifier($problem)>, C<sentence($problem)>

The identifier and the sentence of a problem.

=cut

sub identifier ($problem) { return $identifier_of{ $problem->{key} } }

sub sentence ($problem) {
    my $text = _compose($problem->{key}, $problem->{values});
    return defined $problem->{within} ? compose($problem->{within}, sentence => $text) : $text;
}

=item C<finding($path, $problem, @related)>

The record of a finding (see L<VEL::Record>).

=cut

sub finding ($path, $problem, @related) {
    return VEL::Record::finding($path, sentence($problem), identifier($problem), @related);
}

=item C<place_name($type)>

Where an object is, in words: C<at the top level> for C</>, otherwise C<in DOMAIN>.

=item C<target_name($type)>

Where an object can be moved to, in words: C<the top level> for C</>, otherwise the type.

=cut

sub place_name  ($type) { return $type eq '/' ? compose('at-top') : compose('inside', type => $type) }
sub target_name ($type) { return $type eq '/' ? compose('top') : $type }

=item C<counted($count)>

Values for a sentence with a singular C<{one}> and a plural C<{several}>: the number under
one of the two names.

=item C<named(@names)>

The same for a list of names.

=item C<choice($near, @known)>

Values for a sentence that proposes what to write: C<{near}> if it is defined, otherwise
C<{only}> or C<{known}>, at most 12 of C<@known>.

=cut

my $MOST_SHOWN = 12;

sub counted ($count) { return $count == 1 ? (one => $count) : (several => $count) }

sub named (@names) { return @names == 1 ? (one => $names[0]) : (several => \@names) }

sub choice ($near, @known) {
    return (near => $near) if defined $near;
    return (only => $known[0]) if @known == 1;
    my @shown = @known > $MOST_SHOWN ? (@known[ 0 .. $MOST_SHOWN - 1 ], '...') : @known;
    return (known => \@shown);
}

=item C<compose($key, %values)>

A sentence or a phrase of the table as text.

=back

=cut

sub compose ($key, %values) { return _compose($key, \%values) }

sub _compose ($key, $values) {
    my $parts = $parts{$key} //= _parts($template{$key} // die "there is no sentence $key\n");
    my $text  = '';
    for my $part (@$parts) {
        my $choice = @$part == 1 && !$part->[0]{optional} ? $part->[0] : first { _is_complete($_, $values) } @$part;
        $text .= _filled($choice, $values) if $choice;
    }
    return $text;
}

sub _is_complete ($choice, $values) {
    return !grep { !defined || (ref && !@$_) } @$values{ @{ $choice->{names} } };
}

sub _filled ($choice, $values) {
    my @texts   = @$values{ @{ $choice->{names} } };
    my $joiners = $choice->{joiners};
    $texts[$_] = join $joiners->{$_}, @{ $texts[$_] } for keys %$joiners;
    return sprintf $choice->{format}, @texts;
}

# The parts of a template, each an array of alternatives.
sub _parts ($template) {
    my @parts;
    for my $part (grep { $_ ne '' } split /(<[^<>]*>)/, $template =~ s/%/%%/gr) {
        my $is_optional = $part =~ s/^<(.*)>\z/$1/s;
        push @parts, [ map { { optional => $is_optional, _choice($_) } } $is_optional ? split m{//}, $part : $part ];
    }
    return \@parts;
}

# One alternative: its format for sprintf, the names of its placeholders in order, and
# the text that joins the elements of those that are arrays.
sub _choice ($template) {
    my ($format, @pieces) = split /\{(\w+)(?:\|([^{}]*))?\}/, $template, -1;
    my (@names, %joiners);
    while (my ($name, $joiner, $after) = splice @pieces, 0, 3) {
        $joiners{ scalar @names } = $joiner if defined $joiner;
        push @names, $name;
        $format .= "%s$after";
    }
    return (format => $format, names => \@names, joiners => \%joiners);
}

1;
