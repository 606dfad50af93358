#!/usr/bin/perl
# Writes the help pages that come from the rule libraries: one for each type of
# object, one for each help topic that several of them name, two lists, the fields
# that rules may state, and the findings. If only one type names a topic, the topic
# leads to the page of that type.
#
#     perl -I build/perl rulePages.pl FOLDER LIBRARY...
#
# The command database reads the libraries, as in the programs, and all texts are
# bytes. The pages of an earlier run in FOLDER are replaced.
use strict;
use warnings;
use feature 'signatures';

use Encode ();
use File::Glob qw(bsd_glob);

use API;
use VEL::Findings;
use VEL::Rules::Fields;

# The rules of the libraries. They are the only rules in that database.
sub read_rules (@files) {
    my $api = API->new;
    for my $file (@files) {
        my @lines;
        my $error = $api->readTextFile($file, \@lines) || $api->parseVELData(\@lines, 1);
        die "$file: $error\n" if $error;
    }
    return $api->{model}->rules;
}

# The form in which the viewer compares names.
sub slug ($text) {
    return Encode::encode('UTF-8', lc(Encode::decode('UTF-8', $text)) =~ s/[^\pL\pN]+/-/gr =~ s/^-|-$//gr);
}

# Escapes a text for Markdown.
sub plain ($text) { return $text =~ s/([\\`*_\[\]<>|#])/\\$1/gr }

sub code ($text) { return $text =~ /`/ ? plain($text) : "`$text`" }

sub list (@texts) { return join ', ', @texts }

sub write_page ($folder, $name, $text) {
    my $file = "$folder/$name.md";
    open my $out, '>:raw', $file or die "$file: $!\n";
    print $out $text;
    close $out or die "$file: $!\n";
    return;
}

# --- Types ---------------------------------------------------------------------

# A type that exists both as object and as singleton has two pages.
sub is_second ($rules, $type) {
    return $type->{kind} eq 'SINGLETON' && $rules->type('OBJECT', $type->{type});
}

sub page_name ($rules, $type) {
    my $name = 'type-' . slug($type->{type});
    return is_second($rules, $type) ? "$name-without-name" : $name;
}

sub title ($rules, $type) {
    return plain($type->{type}) . (is_second($rules, $type) ? ' (without a name)' : '');
}

sub type_link ($rules, $word) {
    my $type = $rules->type('OBJECT', $word) // $rules->type('SINGLETON', $word);
    return $type ? '[' . plain($word) . '](' . page_name($rules, $type) . '.md)' : plain($word);
}

sub type_links ($rules, @words) { return list(map { type_link($rules, $_) } @words) }

sub place ($rules, $type) {
    my $parents = $type->{parents} or return 'Allowed in any object.';
    my @places = map { $_ eq '/' ? 'the top level' : type_link($rules, $_) } sort keys %$parents;
    return 'Allowed in: ' . list(@places) . '.';
}

sub form ($type) {
    my $line = $type->{kind} eq 'OBJECT' ? "$type->{type}: Name" : "$type->{type}:";
    return "    $line\n      ...\n    END\n";
}

sub facts ($rules, $type) {
    my @facts = (place($rules, $type));
    push @facts, "One parent may have at most $type->{maximum} of them." if defined $type->{maximum};
    push @facts, 'Parameters may have any name.' if $type->{free};
    push @facts, 'For experts: it is shown only with expert items.' if $type->{expert};
    push @facts, 'Required objects: ' . type_links($rules, @{ $type->{required_objects} }) . '.'
        if @{ $type->{required_objects} };
    push @facts, 'Optional objects: ' . type_links($rules, @{ $type->{optional_objects} }) . '.'
        if @{ $type->{optional_objects} };
    return map { "- $_\n" } @facts;
}

sub case_facts ($rules, $case) {
    my @facts;
    push @facts, 'required parameters: ' . list(map { plain($_) } @{ $case->{required} }) if @{ $case->{required} };
    push @facts, 'optional parameters: ' . list(map { plain($_) } @{ $case->{optional} }) if @{ $case->{optional} };
    push @facts, 'required objects: ' . type_links($rules, @{ $case->{required_objects} })
        if @{ $case->{required_objects} };
    push @facts, 'optional objects: ' . type_links($rules, @{ $case->{optional_objects} })
        if @{ $case->{optional_objects} };
    return '' if !@facts;
    return sprintf "- **%s** is %s: %s.\n", plain($case->{parameter}),
        join(' or ', map { code($_) } @{ $case->{values} }), join '; ', @facts;
}

# --- Parameters ------------------------------------------------------------------

sub range ($parameter) {
    my ($lower, $upper) = @$parameter{qw(lower upper)};
    my ($above, $below) = $parameter->{exclusive} ? ('above', 'below') : ('at least', 'at most');
    return join ' and ', (defined $lower ? "$above " . code($lower) : ()),
        (defined $upper ? "$below " . code($upper) : ());
}

sub entries ($parameter) {
    my ($least, $most) = @$parameter{qw(minimum maximum)};
    return "exactly $least" if defined $least && defined $most && $least == $most;
    return join ', ', (defined $least ? "at least $least" : ()), (defined $most ? "at most $most" : ());
}

my %TYPE_NAME = (String => 'text', Integer => 'whole number', Real => 'number', Logical => 'yes or no');

sub type_name ($parameter) {
    my $name = $TYPE_NAME{ $parameter->{type} };
    return $parameter->{list} ? "list; each entry: $name" : $name;
}

# What the page of a type says about a parameter, from the fields of its rule: a text,
# or undef.
my @FACTS = (
    [ 'Type', sub ($rules, $parameter) { return type_name($parameter) }, 'Type' ],
    [ 'Unit', sub ($rules, $parameter) {
            my $units = $parameter->{units} // return undef;
            return $units eq '1' ? 'none' : code($units);
    }, 'Units' ],
    [ 'Range', sub ($rules, $parameter) { return range($parameter) },
        'Lower Bound', 'Upper Bound', 'Bounds Exclusive' ],
    [ 'Entries', sub ($rules, $parameter) { return entries($parameter) }, 'Minimum Entries', 'Maximum Entries' ],
    [ 'Values', sub ($rules, $parameter) { return list(map { code($_) } @{ $parameter->{values} // [] }) },
        'Allowed Values' ],
    [ 'Names an object of type', sub ($rules, $parameter) {
            return type_links($rules, @{ $parameter->{objects} // [] });
    }, 'Allowed Objects' ],
    [ 'Proposed', sub ($rules, $parameter) {
            return defined $parameter->{default} ? code($parameter->{default}) : undef;
    }, 'Default' ],
    [ 'Editor', sub ($rules, $parameter) { return $parameter->{editable} ? undef : 'cannot be changed' },
        'Editable' ],
    [ 'Safe mode', sub ($rules, $parameter) {
            return $parameter->{running} ? 'may be changed while the solver runs' : undef;
    }, 'Editable While Running' ],
    [ 'Expert', sub ($rules, $parameter) { return $parameter->{expert} ? 'shown only with expert items' : undef },
        'Expert' ],
);

# Fields that say nothing about a value, or that are elsewhere on the page.
my @NO_FACTS = ('Description', 'Help Topic', 'Expressions', 'Output Ordering Priority');

# All other fields appear as a rule writes them.
my %has_fact = map { $_ => 1 } @NO_FACTS, map { @$_[ 2 .. $#$_ ] } @FACTS;
for my $entry (grep { !$has_fact{ $_->{name} } } VEL::Rules::Fields::entries('PARAMETER')) {
    push @FACTS, [ $entry->{name}, sub ($rules, $parameter) {
            my $text = VEL::Rules::Fields::text_of($entry, $parameter->{ $entry->{element} });
            return defined $text ? code($text) : undef;
    } ];
}

sub parameter_facts ($rules, $parameter) {
    return map {
        my ($what, $fact) = @$_;
        my $text = $fact->($rules, $parameter) // '';
        $text eq '' ? () : "- $what: $text\n"
    } @FACTS;
}

# Its rule while the cases that name it apply.
sub parameter_of ($type, $name) {
    my @cases = $type->cases_with([qw(required optional)], $name);
    return $type->parameter($type->plain_variant, $name) if !@cases;
    my %first = ($cases[0]{parameter} => $cases[0]{values}[0]);
    return $type->parameter($type->variant(sub ($switch) { $first{$switch} }), $name);
}

sub parameter_names ($type) {
    my %seen;
    return grep { !$seen{$_}++ } map { @{ $_->{required} }, @{ $_->{optional} } } $type, @{ $type->{cases} };
}

sub parameter_text ($rules, $type, $name) {
    my $parameter = parameter_of($type, $name);
    my $always    = grep { $_ eq $name } @{ $type->{required} };
    my $text      = '### ' . plain($name) . "\n\n";
    $text .= plain($parameter->{description}) . "\n\n" if defined $parameter->{description};
    $text .= "- Always required\n" if $always;
    return $text . join('', parameter_facts($rules, $parameter)) . "\n";
}

sub type_page ($rules, $type, $topic_is_shared) {
    my $also = defined $type->{help} ? "; also: $type->{help}" : '';
    my $text = "<!-- chapter: Objects$also -->\n# " . title($rules, $type) . "\n\n";
    $text .= plain($type->{description}) . "\n\n" if defined $type->{description};
    $text .= form($type) . "\n" . join('', facts($rules, $type)) . "\n";
    my $cases = join '', map { case_facts($rules, $_) } @{ $type->{cases} };
    $text .= "## What depends on values\n\n$cases\n" if $cases ne '';
    my @names = parameter_names($type);
    $text .= "## Parameters\n\n" . join '', map { parameter_text($rules, $type, $_) } @names if @names;
    $text .= 'More on this: [' . plain($type->{help}) . '](topic-' . slug($type->{help}) . ".md)\n"
        if $topic_is_shared;
    return $text;
}

# --- Lists -------------------------------------------------------------------------

sub type_line ($rules, $type) {
    my $what = defined $type->{description} ? ': ' . plain($type->{description}) : '';
    return '- [' . title($rules, $type) . '](' . page_name($rules, $type) . ".md)$what\n";
}

sub topic_page ($rules, $topic, @types) {
    return "<!-- chapter: Subjects -->\n# " . plain($topic) . "\n\n"
        . "These types of objects are about this subject:\n\n"
        . join '', map { type_line($rules, $_) } @types;
}

sub types_page ($rules, @types) {
    return "<!-- chapter: Guide; order: 80; also: Objects, Object types -->\n# All objects\n\n"
        . "Every type of object that the rule libraries know.\n\n"
        . join '', map { type_line($rules, $_) } @types;
}

sub parameters_page ($rules, @types) {
    my %types_of;
    for my $type (@types) {
        push @{ $types_of{$_} }, $type for parameter_names($type);
    }
    return "<!-- chapter: Guide; order: 90; also: Parameters -->\n# All parameters\n\n"
        . "Every parameter that the rule libraries know, and the types that have it.\n\n"
        . join '', map { my $name = $_;
        '- **' . plain($name) . '**: '
            . list(map { '[' . plain($_->{type}) . '](' . page_name($rules, $_) . '.md#'
                    . slug($name) . ')' } @{ $types_of{$name} })
            . "\n" } sort { lc $a cmp lc $b || $a cmp $b } keys %types_of;
}

my @KINDS = (
    [ 'OBJECT',    'Objects',             '`OBJECT: TYPE` for a type with names, `SINGLETON: TYPE` for one without.' ],
    [ 'PARAMETER', 'Parameters',          '`PARAMETER: Name`, in the rule of an object, in a case, or by itself.' ],
    [ 'CASE',      'Cases',               '`CASE: Label`, in the rule of an object.' ],
    [ 'UPGRADE',   'Upgrades',            '`UPGRADE: Version X`.' ],
    [ 'STEP',      'Steps of an upgrade', '`STEP: Label`, in an upgrade.' ],
    [ 'RULES',     'A whole library',     '`RULES:`, around all other rules.' ],
);

sub fields_page () {
    return "<!-- chapter: Guide; order: 95; also: Rules, Fields -->\n# Fields of rules\n\n"
        . "What a rule library may say. A rule library describes the command files of a solver.\n\n"
        . join '', map { "## $_->[1]\n\n$_->[2]\n\n" . join('', VEL::Rules::Fields::document($_->[0])) . "\n" } @KINDS;
}

sub findings_page () {
    my $text = "<!-- chapter: Guide; order: 85 -->\n# Findings\n\n"
        . "A finding ends with an identifier in brackets. It says what kind of mistake it is, in the\n"
        . "editor and in `veltool`.\n\n";
    my $group = '';
    for my $entry (VEL::Findings::entries()) {
        $text .= "## $entry->{group}\n\n" if $entry->{group} ne $group;
        $group = $entry->{group};
        $text .= "### $entry->{identifier}\n\n$entry->{explanation}\n";
    }
    return $text;
}

# --- The run -----------------------------------------------------------------------

my ($folder, @files) = @ARGV;
die "usage: rulePages.pl FOLDER LIBRARY...\n" if !@files;
my $rules = read_rules(@files);
die map { "$_\n" } $rules->faults if $rules->faults;

mkdir $folder if !-d $folder;
unlink bsd_glob("$folder/{type,topic}-*.md");

my @types = sort { $a->{type} cmp $b->{type} || $a->{kind} cmp $b->{kind} } $rules->types;
my %of_topic;
for my $type (grep { defined $_->{help} } @types) {
    push @{ $of_topic{ $type->{help} } }, $type;
}
my %is_shared = map { $_ => 1 } grep { @{ $of_topic{$_} } > 1 } keys %of_topic;
for my $type (@types) {
    write_page($folder, page_name($rules, $type), type_page($rules, $type, $is_shared{ $type->{help} // '' }));
}
write_page($folder, 'topic-' . slug($_), topic_page($rules, $_, @{ $of_topic{$_} })) for sort keys %is_shared;
write_page($folder, 'all-objects', types_page($rules, @types));
write_page($folder, 'all-parameters', parameters_page($rules, @types));
write_page($folder, 'fields-of-rules', fields_page());
write_page($folder, 'findings', findings_page());
