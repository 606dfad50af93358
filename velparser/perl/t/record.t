# Findings, changes and fields as records, and as the text that is made of them.
use strict;
use warnings;
use feature 'signatures';
use Test::More;
use FindBin;
use lib "$FindBin::Bin/lib";

use VEL::Record qw(finding finding_line finding_lines change_text change_line field_line);
use VELTest;

# The findings of all objects, as records.
sub records ($database) {
    my $validator = validator($database);
    my @all;
    for my $path (all_paths($database)) {
        is $validator->validateObjectRecords($path, \my @findings), undef, "no failure at $path";
        push @all, @findings;
    }
    return @all;
}

# What a text says, as path, identifier and related paths of each finding.
sub related ($rules, $data) {
    return [ map { [ @$_{qw(path identifier)}, @{ $_->{related} } ] } records(database($rules, $data)) ];
}

my $rules = <<'TEXT';
RULES:
  Language Version = 2.0
  SINGLETON: FLOW
    Parents = /
    Free Parameters = Yes
    Optional Objects = PUMP, PIPE, NOTE
  END
  OBJECT: PUMP
    Parents = FLOW
    Maximum Count = 2
    Required Parameters = Kind
    Optional Parameters = Pipe, Gauge [1], Gauge [Pa]
    CASE: Driven
      If Parameter = Kind
      Is One Of = Driven
      Required Parameters = Speed
      Required Objects = MOTOR
      PARAMETER: Gauge [Pa]
        Allowed Values = low, high
      END
    END
    CASE: Idle
      If Parameter = Kind
      Is One Of = Idle
      Optional Parameters = Rest
      Optional Objects = COVER
    END
    PARAMETER: Kind
      Allowed Values = Driven, Idle, Free
    END
    PARAMETER: Pipe
      Allowed Objects = PIPE
    END
    PARAMETER: Gauge [1]
      Type = Integer
    END
  END
  OBJECT: PIPE
    Parents = FLOW
  END
  SINGLETON: MOTOR
    Parents = PUMP
  END
  SINGLETON: COVER
    Parents = PUMP
  END
END
TEXT

subtest 'related paths' => sub {
    is_deeply related($rules, "FLOW:\nPUMP: a\nKind = Driven\nEND\nEND"),
        [ [ '/FLOW/PUMP:a', 'missing-parameter', '/FLOW/PUMP:a/Kind' ],
        [ '/FLOW/PUMP:a', 'missing-object',    '/FLOW/PUMP:a/Kind' ] ],
        'the parameter whose value makes something required';
    is_deeply related($rules, "FLOW:\nPUMP: a\nEND\nEND"), [ [ '/FLOW/PUMP:a', 'missing-parameter' ] ],
        'none where the rule itself requires it';
    is_deeply related($rules, "FLOW:\nPUMP: a\nKind = Free\nRest = 1\nCOVER:\nEND\nEND\nEND"),
        [ [ '/FLOW/PUMP:a/Rest', 'unknown-parameter', '/FLOW/PUMP:a/Kind' ],
        [ '/FLOW/PUMP:a/COVER', 'not-allowed', '/FLOW/PUMP:a/Kind' ] ],
        'the parameter whose value forbids something';
    is_deeply related($rules, "FLOW:\nPUMP: a\nKind = Driven\nSpeed = 1\nGauge [Pa] = hgih\nMOTOR:\nEND\nEND\nEND"),
        [ [ '/FLOW/PUMP:a/Gauge [Pa]', 'not-allowed', '/FLOW/PUMP:a/Kind' ] ],
        'the parameter whose value decides which values are allowed';
    is_deeply related($rules, "FLOW:\n" . join('', map { "PUMP: $_\nKind = Free\nEND\n" } 'a' .. 'c') . 'END'),
        [ [ '/FLOW/PUMP:c', 'too-many', '/FLOW/PUMP:a' ] ], 'the first object of the maximum count';
    is_deeply related($rules, "FLOW:\nPIPE: main\nEND\nPUMP: a\nKind = Free\nPipe = mian\nEND\nEND"),
        [ [ '/FLOW/PUMP:a/Pipe', 'no-such-object', '/FLOW/PIPE:main' ] ], 'the object that is probably meant';
    is_deeply related($rules, "FLOW:\nPIPE: main\nEND\nPUMP: a\nKind = Free\nPipe = other\nEND\nEND"),
        [ [ '/FLOW/PUMP:a/Pipe', 'no-such-object' ] ], 'none if it is not known which object is meant';
    my $many = join '', map { "PUMP: p$_\nKind = Free\nEND\n" } 1 .. 200;
    my $found = related($rules, "FLOW:\n${many}END");
    is scalar @$found, 198, 'of many';
    is_deeply [ grep { $_->[2] ne '/FLOW/PUMP:p1' } @$found ], [], 'each names the first';
};

subtest 'names and values that look like something else' => sub {
    my $database = database($rules, "FLOW:\nPUMP: a\nKind = Free\nGauge [1] = x\nEND\nPUMP: b [m]\nEND\nEND");
    is $database->createParam('/FLOW/PUMP:a/Gauge [1]', qq(a "b": c [d])), undef, 'a value';
    my ($value, $missing) = records($database);
    is_deeply $value, { path => '/FLOW/PUMP:a/Gauge [1]', identifier => 'wrong-type', related => [],
        text => qq("a "b": c [d]" is not a whole number; use a value such as 10) }, 'the finding is whole';
    is finding_line($value), qq(/FLOW/PUMP:a/Gauge [1]: "a "b": c [d]" is not a whole number; use a value such as 10 [wrong-type]),
        'and its text';
    is $missing->{path}, '/FLOW/PUMP:b [m]', 'a name that ends like an identifier';
    my $validator = validator($database);
    $validator->validateParamRecords('/FLOW/PUMP:a/Gauge [1]', \my @findings);
    is_deeply \@findings, [$value], 'the same for the parameter alone';
    is $validator->validateParam('/FLOW/PUMP:a/Gauge [1]'), finding_line($value), 'as text';
    is $validator->validateParamRecords('/FLOW/PUMP:a/Kind', \@findings), undef, 'a correct value';
    is_deeply \@findings, [], 'empties the array';
    is $validator->validateParam('/FLOW/PUMP:a/Kind'), undef, 'and is not a text';
};

subtest 'findings as text' => sub {
    is finding_lines(), '', 'none';
    is finding_lines(finding('/A', 'b', 'c', '/D'), finding('/E', 'f', 'g')), "/A: b [c]\n/E: f [g]", 'two';
};

subtest 'changes' => sub {
    my $steps = <<'TEXT';
RULES:
  Language Version = 2.0
  UPGRADE: Version 2.0
    STEP: s1
      Action = Rename Parameter
      Object Type = PUMP
      Parameter = renamed to x
      New Name = moved to y
    END
    STEP: s2
      Action = Change Value
      Object Type = PUMP
      Parameter = Note
      New Value = removed; it was "z"
    END
    STEP: s3
      Action = Remove Parameter
      Object Type = PUMP
      Parameter = Old
    END
    STEP: s4
      Action = Add Parameter
      Object Type = PUMP
      Parameter = New
      New Value = 1
    END
    STEP: s5
      Action = Move Parameter
      Object Type = PUMP
      Parameter = New
      To Object = PLACE
    END
    STEP: s6
      Action = Rename Object Type
      Object Type = PUMP
      New Name = FAN
    END
    STEP: s7
      Action = Remove Object
      Object Type = FAN
    END
  END
END
TEXT
    my $data = qq(LANGUAGE:\nVersion = 1.0\nEND\nPUMP: renamed to b\nrenamed to x = 1\nNote = "n"\nOld =\nEND);
    my $at   = '/PUMP:renamed to b';
    my $new  = '/FAN:renamed to b';
    is api($steps, $data)->updateSolverVELRecords(\my @changes), '', 'no failure';
    my @texts = map { delete $_->{text} } @changes;
    is_deeply \@changes, [
        { kind => 'rename-parameter', path => "$at/renamed to x", new_path => "$at/moved to y" },
        { kind => 'change-value', path => "$at/Note", old => '"n"', new => 'removed; it was "z"' },
        { kind => 'remove-parameter', path => "$at/Old", old => '' },
        { kind => 'add-parameter', path => "$at/New", new => '1' },
        { kind => 'move-parameter', path => "$at/New", new_path => "$at/PLACE/New" },
        { kind => 'rename-object', path => $at, new_path => $new },
        { kind => 'remove-object', path => $new },
        { kind => 'set-version', path => '/LANGUAGE/Version', old => '1.0', new => '2.0' },
    ], 'each as a record';
    is_deeply [ map { change_text($_) } @changes ], \@texts, 'which has its text';
    is api($steps, $data)->updateSolverVEL, join("\n", map { change_line($_) } @changes), 'the specified text';
    is_deeply [ sort keys %VEL::Record::CHANGE ], [ sort map { $_->{kind} } @changes ], 'all kinds';
    open my $in, '<', source_folder() . '/velparser/api/perlRecords.cpp' or die $!;
    is_deeply [ sort map { /\{"([a-z-]+)", ChangeKind::/ } <$in> ], [ sort keys %VEL::Record::CHANGE ],
        'which the bridge knows too';
    close $in;
    api($steps, "FLOW:\nEND")->updateSolverVELRecords(\@changes);
    is_deeply \@changes, [], 'no change empties the array';
};

subtest 'fields' => sub {
    my $api = api("RULES:\nPARAMETER: A [1]\nDescription = x = y\nDefault = a = b\nEND\nEND");
    is $api->explainItemRecords('/FLOW/A [1]', \my @fields), '', 'no failure';
    is_deeply [ @fields[ 0 .. 2 ] ], [ { name => 'Description', text => 'x = y', tip => 1 },
        { name => 'Type', text => 'String', tip => 1 }, { name => 'Default', text => 'a = b' } ],
        'name and text, and whether the tip of a row shows it';
    $api->explainItem('/FLOW/A [1]', \my @lines);
    is_deeply \@lines, [ map { field_line($_) } @fields ], 'as lines';
    is $lines[0], 'Description = x = y', 'as a rule would write them';
};

subtest 'faults of rules' => sub {
    local $ENV{ZOT5_VEL_LIBSDIR} = '.';
    local $ENV{ZOT5_VEL_LIBS}    = '';
    my $wrong = "RULES:\nOBJECT: A\nTypo = 1\nEND\nEND";
    my $api   = api($wrong);
    is $api->readLibrariesRecords(\my @faults), undef, 'nothing failed';
    is_deeply [ map { [ @$_{qw(path identifier)} ] } @faults ], [ [ '/RULES/OBJECT:A/Typo', 'bad-rule' ] ], 'the fault';
    is api($wrong)->readLibraries, finding_line($faults[0]), 'as text';
    $api->readLibrariesRecords(\@faults);
    is_deeply \@faults, [], 'reported once';
};

# What the records say is what the texts say, for all that ships.
subtest 'the examples' => sub {
    for my $file (glob source_folder() . '/examples/*.vel') {
        my $name = $file =~ s{.*/}{}r;
        API->new->readTextFile($file, \my @lines) and die $name;
        my ($one, $two) = map { with_libraries() } 1 .. 2;
        $_->parseVELData(\@lines, 0) and die $name for $one, $two;
        $one->updateSolverVELRecords(\my @changes);
        is $two->updateSolverVEL, join("\n", map { change_line($_) } @changes), "$name: changes";
        my @findings = records($one->{database});
        is findings($two->{database}, 1), join('', map { finding_line($_) . "\n" } @findings), "$name: findings";
        is_deeply [ grep { !$one->{database}->havePath($_) } map { @{ $_->{related} } } @findings ], [],
            "$name: related paths are there";
    }
};

done_testing;
