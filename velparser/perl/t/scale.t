# What loading and validating cost does not grow with the size of the file or
# its depth. Times are those of the processor, so that other work does not count.
use strict;
use warnings;
use feature 'signatures';
use Test::More;
use FindBin;
use Time::HiRes qw(clock);
use lib "$FindBin::Bin/lib";

use VEL::Rules;
use VEL::Validate;
use VELTest;

my $make_large = source_folder() . '/examples/make-large.pl';

sub seconds ($work) {
    my $before = clock();
    $work->();
    return clock() - $before;
}

# A validator with all checks on, for an API that has loaded so many lines.
sub loaded ($lines) {
    my $api = with_libraries();
    chomp(my @lines = qx{$^X $make_large $lines});
    my $error = $api->parseVELData(\@lines, 0);
    die $error if $error;
    return ($api, validator($api->{database}));
}

my %cost;    # of one line, in microseconds
subtest 'set-ups of all sizes' => sub {
    for my $lines (2_000, 20_000, 200_000) {
        my ($api, $validator) = loaded($lines);
        my @paths = all_paths($api->{database});
        my $found = 0;
        my $validate = seconds(sub { $found += defined $validator->validateObject($_) for @paths });
        is $found, 0, "$lines lines are valid";
        $cost{$lines} = 1e6 * $validate / $lines;
        note sprintf '%7d lines: %.1f us a line', $lines, $cost{$lines};
    }
    # Caches of the processor and the system's noise are allowed for.
    cmp_ok $cost{20_000},  '<', 3 * $cost{2_000}, 'a line of 20,000 costs what one of 2,000 does';
    cmp_ok $cost{200_000}, '<', 3 * $cost{2_000}, 'and so does one of 200,000';
};

subtest 'rules are compiled once for each load of libraries' => sub {
    my ($api, $validator) = loaded(2_000);
    my $model    = $api->{model};
    my $compiled = $model->compiled;
    $validator->validateObject($_) for all_paths($api->{database});
    $api->{database}->setStringValue('/FLOW/DOMAIN:Room 1/Kind', 'Solid');
    $validator->validateObject('/FLOW/DOMAIN:Room 1');
    $api->getAllowedParams('/FLOW/DOMAIN:Room 1', \my @names, 1);
    is $model->compiled, $compiled, 'not for a question, and not for an edit';
    $api->readLibraries;
    is $model->compiled, $compiled + 1, 'but after libraries are read again';
};

# An old set-up of so many fluids with three patches each.
sub old_lines ($fluids) {
    my @patches = map { ("PATCH: p$_", 'Patch Type = Inflow', 'Flow By = Mass', 'END') } 1 .. 3;
    return ('LANGUAGE:', 'Version = 1.0', 'END', 'FLOW:',
        (map { ("FLUID: f$_", 'Material = Water', @patches, 'END') } 1 .. $fluids), 'END');
}

subtest 'upgrades' => sub {
    my %each;    # cost of one change, in microseconds
    for my $fluids (200, 3_000) {
        my $api   = with_libraries();
        my $error = $api->parseVELData([ old_lines($fluids) ], 0);
        die $error if $error;
        my $changes = '';
        my $taken   = seconds(sub { $changes = $api->updateSolverVEL });
        my $number  = split /\n/, $changes;
        cmp_ok $number, '>', 15 * $fluids, "$number changes";
        $each{$fluids} = 1e6 * $taken / $number;
        note sprintf '%6d changes: %.1f us each', $number, $each{$fluids};
    }
    cmp_ok $each{3_000}, '<', 3 * $each{200}, 'the cost for each does not grow with their number';
};

# How often the code of a function runs while $work does.
sub calls ($name, $work) {
    my $count = 0;
    no strict 'refs';    ## no critic (ProhibitNoStrict)
    no warnings 'redefine';
    my $code = \&$name;
    local *$name = sub { $count++; goto &$code };
    $work->();
    return $count;
}

sub rule_lines (@lines) {
    return VEL::Rules->new(VEL::Rules::Source::read_tree(database(join "\n", 'RULES:', @lines, 'END')));
}

subtest 'number of questions about long chains of heirs' => sub {
    my %asked;
    for my $heirs (200, 400) {
        my @lines = ('OBJECT: T0', 'PARAMETER: Size', 'END', 'END', map {
                ("OBJECT: T$_", 'Inherits = OBJECT:T' . ($_ - 1), 'PARAMETER: Size', 'Expert = Yes', 'END', 'END')
        } 1 .. $heirs);
        splice @lines, -4, 0, 'Required Parameters = Size';
        my $faults;
        $asked{$heirs} = calls('VEL::Rules::Type::listed_parameters' => sub { $faults = () = rule_lines(@lines)->faults });
        is $faults, 0, "$heirs heirs: what the last of them lists counts for all";
    }
    is $asked{400} - $asked{200}, 200, 'one more for each heir';
};

subtest 'number of comparisons if many names are wrong' => sub {
    my $unlisted = sub ($count) {
        my @rules = map { ("PARAMETER: Nmae $_ $_", 'END') } 1 .. $count;
        my $names = join ', ', map { "Name $_ $_" } 1 .. $count;
        my $faults;
        my $made = calls('VEL::Suggest::_slips' => sub {
                $faults = () = rule_lines('OBJECT: T', "Required Parameters = $names", @rules, 'END')->faults;
        });
        is $faults, $count, "$count faults";
        return $made;
    };
    my $few = $unlisted->(150);
    is $unlisted->(600), $few, 'no more for 600 than for 150';
};

subtest 'number of rules made for parameters that no rule describes' => sub {
    my $database  = database("RULES:\nOBJECT: BOX\nFree Parameters = Yes\nPARAMETER: Size\nType = Real\nEND\nEND\nEND");
    my $validator = VEL::Validate->new($database);
    my $made      = sub ($box, $count) {
        $database->loadVELData([ "BOX: $box", 'Size = 1', (map { "P $_ = 1" } 1 .. $count), 'END' ]);
        return calls('VEL::Rules::Parameter::new' => sub { is $validator->validateObject("/BOX:$box"), undef, "$count are right" });
    };
    is $made->('a', 10), 1, 'only for the parameter that a rule describes';
    is $made->('b', 5_000), 0, 'which is kept for the next question';
};

{
    package Counted;    # an array that counts how often its elements are read
    require Tie::Array;
    our @ISA  = 'Tie::StdArray';
    our $read = 0;
    sub FETCH { my ($self, $i) = @_; $read++; return $self->[$i] }
}

subtest 'number of steps for names in the list of a case' => sub {
    my $list = join ', ', map { "P$_" } 1 .. 1000;
    my $type = rule_lines('OBJECT: T', 'Required Parameters = Kind', 'CASE: x', 'If Parameter = Kind',
        'Is One Of = a', "Optional Parameters = $list", 'END', 'END')->type('OBJECT', 'T');
    my @names = @{ $type->{cases}[0]{optional} };
    tie my @counted, 'Counted';
    @counted = @names;
    $type->{cases}[0]{optional} = \@counted;
    is scalar(map { $type->cases_with([ 'required', 'optional' ], $_) } @names), 1000, 'the case names each of them';
    is $Counted::read, 1000, 'each is read once, for any number of questions';
};

subtest 'number of steps for suggestions in an object with many children' => sub {
    my $database = database("RULES:\nOBJECT: T\nOptional Parameters = Kind\nOptional Objects = C\nCASE: x\n"
            . "If Parameter = Kind\nIs One Of = a\nOptional Objects = D\nEND\nEND\nOBJECT: C\nParents = T\nEND\n"
            . "OBJECT: D\nParents = T\nEND\nEND");
    is $database->loadVELData([ 'T: t', (map { "X$_ = 1" } 1 .. 10), (map { ("D: d$_", 'END') } 1 .. 100), 'END' ]), undef, 'loaded';
    my $validator = VEL::Validate->new($database);
    my $found = 0;
    my $asked = calls('VEL::Suggest::find' => sub { $found += defined $validator->validateObject("/T:t/D:d$_") for 1 .. 100 });
    is $found, 100, 'no child is allowed';
    is $asked, 10, 'each unknown name of the parent is looked up once';
};

my $count = 10_000;

# The seconds it takes to look at the blocks of this text; $path_of gives the
# path of each by its number.
sub boxes ($name, $text, $path_of) {
    my $database = database(<<'TEXT');
RULES:
  OBJECT: BOX
    Optional Parameters = Size
    PARAMETER: Size
      Type = Real
    END
  END
END
TEXT
    is $database->loadVELData($text), undef, "$name: loaded";
    my $validator = VEL::Validate->new($database);
    my ($found, $path) = (0);
    my $taken = seconds(sub {
            $found += defined $validator->validateObject($path = $path_of->($_)) for 1 .. $count;
    });
    is $found, 0, "$name: valid";
    is $database->isValid($path) & 1, 1, "$name: to the last";
    note sprintf '%s: %.2f s', $name, $taken;
    return $taken;
}

# Each question names its object by a path that is longer with every level, at
# last by 80,000 characters.
subtest 'ten thousand nested blocks' => sub {
    my @blocks = map { [ "BOX: b$_", 'Size = 1' ] } 1 .. $count;
    my @flat   = map { (@$_, 'END') } @blocks;
    my @nested = ((map { @$_ } @blocks), ('END') x $count);
    my $above  = '';
    my $flat = boxes('side by side',  \@flat,   sub ($number) { return "/BOX:b$number" });
    my $deep = boxes('in each other', \@nested, sub ($number) { return $above .= "/BOX:b$number" });
    cmp_ok $deep, '<', 40 * $flat, 'cost little more than ten thousand blocks on one level';
};

subtest 'many objects of a type with a maximum count' => sub {
    my $database = database("RULES:\nOBJECT: BOX\nMaximum Count = 9999\nEND\nEND");
    my %each;    # cost of one block, in microseconds
    for my $boxes (500, $count) {
        is $database->loadVELData([ map { ("BOX: b$_", 'END') } 1 .. $boxes ]), undef, "$boxes: loaded";
        my $validator = VEL::Validate->new($database);
        my $found     = 0;
        my $taken     = seconds(sub { $found += defined $validator->validateObject("/BOX:b$_") for 1 .. $boxes });
        is $found, $boxes > 9999 ? 1 : 0, "$boxes: only the last is too many";
        $each{$boxes} = 1e6 * $taken / $boxes;
        note sprintf '%6d: %.1f us each', $boxes, $each{$boxes};
    }
    cmp_ok $each{$count}, '<', 4 * $each{500}, 'the cost for each does not grow with their number';
};

done_testing;
