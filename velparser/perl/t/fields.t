# The table of fields: what reads it, what it describes, and the documents say the same.
use strict;
use warnings;
use feature 'signatures';
use Test::More;
use FindBin;
use lib "$FindBin::Bin/lib";

use VEL::Model;
use VEL::Rules::Fields;
use VEL::Rules::Source;
use VELTest;

sub slurp ($file) {
    open my $handle, '<', $file or die "$file: $!";
    return do { local $/ = undef; readline $handle };
}

sub rules ($text) { return VEL::Model->of(database("RULES:\n$text\nEND"))->rules }

my %names = map { $_->{name} => 1 } map { VEL::Rules::Fields::entries($_) } VEL::Rules::Fields::kinds();

subtest 'entries are complete' => sub {
    my %known = map { $_ => 1 } qw(name kinds type meaning default silent element own only_for tip);
    for my $entry (map { VEL::Rules::Fields::entries($_) } VEL::Rules::Fields::kinds()) {
        is join(' ', grep { !$known{$_} } sort keys %$entry), '', "$entry->{name}: no element that no code reads";
        ok(length $entry->{meaning}, '... a meaning');
        ok(VEL::Rules::Source->can("_field_$entry->{type}"), "... a type that can be checked: $entry->{type}");
        is scalar(grep { $_ eq $entry->{type} } @VEL::Rules::Fields::TYPES), 1, '... and is in words';
    }
};

subtest 'elements that the code reads' => sub {
    my %elements = (
        OBJECT => [qw(description help inherits parents required optional free required_objects optional_objects
                maximum expert priority)],
        CASE      => [qw(description parameter values required optional required_objects optional_objects)],
        PARAMETER => [qw(description help type units lower upper exclusive values objects minimum maximum default
                editable running expert expressions priority)],
    );
    is_deeply [ sort keys %{ VEL::Rules::Fields::compile($_, {}) } ], [ sort @{ $elements{$_} } ], $_
        for sort keys %elements;
    is_deeply VEL::Rules::Fields::compile('SINGLETON', {}), VEL::Rules::Fields::compile('OBJECT', {}), 'SINGLETON';
};

# Words in the code that begin with a capital and are not fields.
my %OTHER = map { $_ => 1 } (
    @VEL::Rules::Source::TYPES, keys %VEL::Rules::Source::ACTIONS,
    qw(Yes No Presence Parameters Objects Version),
);

subtest 'every field that the code names is in the table, and every field is used' => sub {
    my $folder = "$FindBin::Bin/../VEL";
    my %named;
    for my $file (grep { !/Fields\.pm$/ } "$folder/Rules.pm", "$folder/Upgrade.pm", "$folder/Explanation.pm",
        glob "$folder/Rules/*.pm")
    {
        my $code = slurp($file) =~ s/^=\w.*?^=cut$//gmsr =~ s/^\s*#.*$//gmr;
        for my $name ($code =~ /'([A-Z][a-z]+(?: [A-Z][a-z]+| Is| Of)*)'/g) {
            next if $OTHER{$name};
            $named{$name} = 1;
            ok $names{$name}, "$name, in $file" if !$names{$name};
        }
    }
    for my $kind (VEL::Rules::Fields::kinds()) {
        for my $entry (grep { !defined $_->{element} } VEL::Rules::Fields::entries($kind)) {
            ok $named{ $entry->{name} }, "$kind: $entry->{name} is read by name";
        }
    }
};

# A text of each type that no rule has by default, and the type of rule that takes it.
my %SAMPLE = (
    text => 'Words', rule => 'OBJECT:OTHER', places => 'OTHER', logical => 'on', integer => '7', positive => '8',
    names => 'One, Two', types => 'OTHER', name => 'Switch', values => 'a, b', type => 'Real List', unit => 'kg',
    quantity => '1 [kg]', count => '9', version => '4.2', action => 'Remove Object',
);

subtest 'a stated field counts' => sub {
    for my $kind (qw(OBJECT SINGLETON CASE PARAMETER)) {
        my $silent = VEL::Rules::Fields::compile($kind, {});
        for my $entry (VEL::Rules::Fields::entries($kind)) {
            my $text = $SAMPLE{ $entry->{type} };
            $text = 'off' if ($entry->{default} // '') eq 'Yes';
            my $element = $entry->{element} // next;
            my $stated  = VEL::Rules::Fields::compile($kind, { $entry->{name} => $text });
            my $written = VEL::Rules::Fields::text_of($entry, $stated->{$element}) =~ s/^1$/Yes/r;
            is $written, { on => 'Yes', off => 'No' }->{$text} // $text, "$kind: $entry->{name}";
            delete $stated->{$element};
            is_deeply $stated, { map { $_ => $silent->{$_} } keys %$stated }, '... and no other';
        }
    }
};

subtest 'no rule may state another' => sub {
    for my $kind (qw(OBJECT PARAMETER)) {
        my %of = map { $_->{name} => $_ } VEL::Rules::Fields::entries($kind);
        for my $name (sort keys %names) {
            my ($entry) = map { VEL::Rules::Fields::by_name($_)->{$name} // () } VEL::Rules::Fields::kinds();
            my $text   = "$kind: X\n$name = $SAMPLE{ $entry->{type} }\nEND\nOBJECT: OTHER\nEND";
            my $faults = join "\n", rules($text)->faults;
            is $faults =~ / has no field "\Q$name\E"/ ? 0 : 1, $of{$name} ? 1 : 0, "$kind: $name";
        }
    }
};

subtest 'explain gives every field that is stated' => sub {
    my @fields = grep { $_->{type} ne 'rule' } VEL::Rules::Fields::entries('PARAMETER');
    my %text = map { $_->{name} => $SAMPLE{ $_->{type} } } @fields;
    $text{'Maximum Entries'} = 10;
    $text{'Upper Bound'}     = '2 [kg]';
    delete @text{qw(Default)};
    my $text  = join "\n", map { "$_ = $text{$_}" } sort keys %text;
    my $model = VEL::Model->of(database("RULES:\nOBJECT: OTHER\nEND\nPARAMETER: P\n$text\nEND\nEND", "P = 1"));
    my @explained  = $model->explanation('/P');
    my %given = map { @$_[ 0, 1 ] } @explained;
    $text{$_} = 'Yes' for grep { $text{$_} eq 'on' } keys %text;
    delete $given{Presence};
    is_deeply \%given, \%text, 'of a parameter';
    is_deeply [ map { $_->[0] } grep { $_->[2] } @explained ], [ map { $_->{name} } grep { $_->{tip} } @fields ],
        '... and which of them the tip of a row shows';
};

subtest 'rules.md has the same tables' => sub {
    my $page   = slurp(source_folder() . '/docs/rules.md');
    my @tables = $page =~ /^(\| field \| value .*?\n)(?!\|)/gms;
    my %wanted = map { join('', VEL::Rules::Fields::document($_)) => $_ } VEL::Rules::Fields::kinds();
    my %found  = map { $_ => 1 } @tables;
    ok $found{$_}, "that of $wanted{$_}" or diag $_ for sort keys %wanted;
    is scalar @tables, scalar keys %wanted, 'and no others';
};

done_testing;
