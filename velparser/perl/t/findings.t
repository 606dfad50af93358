# The table of findings: what the packages say is in it, and nothing else.
use strict;
use warnings;
use feature 'signatures';
use Test::More;
use FindBin;
use lib "$FindBin::Bin/lib";

use VEL::Findings qw(problem sentence finding compose counted named choice);
use VEL::Record;
use VELTest;

my @entries   = VEL::Findings::entries();
my %sentences = map { %{ $_->{sentences} } } @entries;
my %phrases   = map { $_ => 1 } VEL::Findings::phrases();

# All packages but the table, without what is documentation.
sub sources () {
    my %code;
    for my $file (glob "$FindBin::Bin/../*.pm $FindBin::Bin/../VEL/*.pm $FindBin::Bin/../VEL/*/*.pm") {
        next if $file =~ m{/Findings\.pm$};
        open my $handle, '<', $file or die "$file: $!";
        my $text = do { local $/ = undef; readline $handle };
        $code{$file} = $text =~ s/^=\w.*?^=cut$//gmsr =~ s/^\s*#.*$//gmr;
    }
    return \%code;
}

subtest 'entries are complete' => sub {
    my (%seen, $count);
    for my $entry (@entries) {
        my $word = $entry->{identifier};
        is_deeply [ sort keys %$entry ], [qw(explanation group identifier sentences)], $word;
        like $word, qr/^[a-z]+(?:-[a-z]+)+\z/, '... an identifier';
        ok !$seen{$word}++, '... that no other has';
        like $entry->{explanation}, qr/\A[A-Z].*\.\n\z/s, '... with an explanation';
        ok keys %{ $entry->{sentences} } > 0, '... and a sentence';
        $count += keys %{ $entry->{sentences} };
    }
    is keys %sentences, $count, 'no key occurs twice';
    is join(' ', grep { $sentences{$_} } keys %phrases), '', 'no key is also the key of a phrase';
};

subtest 'every sentence of the packages is in the table, and every sentence of the table is used' => sub {
    my $code   = join "\n", values %{ sources() };
    my %quoted = map { $_ => 1 } $code =~ /'([a-z]+(?:-[a-z]+)*)'/g;
    # Words of records of changes look the same.
    my @said = grep { /-/ && !$VEL::Record::CHANGE{$_} && $_ ne 'bad-rule' } sort keys %quoted;
    is join(' ', grep { !$sentences{$_} && !$phrases{$_} } @said), '', 'the packages name no other sentence, and no change but those of VEL::Record';
    my %own = map { $_ => 1 } qw(at-top inside top);    # see place_name and target_name
    is join(' ', grep { !$quoted{$_} && !$own{$_} } sort keys %sentences, keys %phrases), '',
        'every sentence is used';
};

# What finds something has no words of its own.
subtest 'sentences are only in the table' => sub {
    my $code = sources();
    for my $file (grep { m{/(?:Validate|Expression|Rules)\.pm$|/Rules/(?!Fields)} } sort keys %$code) {
        my @english = $code->{$file} =~ s/ # .*//gr
            =~ /^.*\b(?:is|are|may|must|does|has|lacks|names|needs|states|there) (?:a|an|no|not|is|the|be|any|only)\b.*$/gm;
        is join("\n", @english), '', $file =~ s{.*/}{}r;
    }
};

subtest 'how a sentence is composed' => sub {
    is sentence(problem('missing-parameter', name => 'Kind')), 'required parameter "Kind" is missing', 'a placeholder';
    my @hint = (type => 'DOMAIN', name => 'Kinds');
    is sentence(problem('unknown-parameter', @hint, near => 'Kind')),
        'DOMAIN has no parameter "Kinds"; did you mean Kind?', 'the first alternative';
    is sentence(problem('unknown-parameter', @hint)),
        'DOMAIN has no parameter "Kinds"; correct the name or remove the parameter', '... and the last one';
    is compose('bad-type', value => 'x', known => []), 'Unknown type "x"', 'a part without an alternative that fits is left out';
    is compose('bad-type', value => 'x', known => [qw(a b)]), 'Unknown type "x"; use one of a, b', 'an array';
    is compose('missing-fields', named(qw(a b c))), '"a" and "b" and "c" are missing', 'an array with another joiner';
    is compose('missing-fields', named('a')), '"a" is missing', 'a single name';
    is sentence(problem('too-few-entries', counted(1), count => 0)), 'Expected at least 1 entry, found 0', 'singular';
    is sentence(problem('too-few-entries', counted(3), count => 2)), 'Expected at least 3 entries, found 2', 'plural';
    is compose('count-of-none', value => '{value} <{x}>'), '{value} <{x}> allows no objects; use 1 or more',
        'a value is not taken for a template';
    my $problem = problem('missing-unit', number => 5, units => 'Pa');
    $problem->{within} = 'separate-entries';
    is sentence($problem), '5 has no unit; write it as 5 [Pa]; separate the entries with commas',
        'a phrase around a sentence';
    is_deeply finding('/A', problem('rules-in-data'), '/B'), {
        path => '/A', identifier => 'rules-in-data', related => ['/B'],
        text => 'Rules in command data have no effect; move them to a rule library',
    }, 'a finding';
    ok !eval { compose('no-such-key'); 1 }, 'an unknown key';
};

subtest 'what a sentence proposes' => sub {
    is_deeply { choice('a', 'a', 'b') }, { near => 'a' }, 'the nearest name';
    is_deeply { choice(undef, 'a') }, { only => 'a' }, 'the only name';
    is_deeply { choice(undef, 1 .. 12) }, { known => [ 1 .. 12 ] }, 'up to 12 names';
    is_deeply { choice(undef, 1 .. 13) }, { known => [ 1 .. 12, '...' ] }, 'the first 12 of more';
};

# Each place of a sentence is given by the code that names it.
subtest 'places' => sub {
    my @warnings;
    local $SIG{__WARN__} = sub { push @warnings, @_ };
    my $validator = validator(database("RULES:\nSINGLETON: A\nParents = /\nOptional Parameters = B\nPARAMETER: B\n"
                . "Type = Real\nUnits = m\nEND\nEND\nEND", "A:\nB = x\nC = 1\nEND\nD:\nEND"));
    $validator->validateObject($_) for '/', '/A', '/D', '/E', '/A/B';
    is "@warnings", '', 'none is missing';
};

done_testing;
