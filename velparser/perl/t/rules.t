# The compiled rules: fields, cases, inheritance, and the faults of rule libraries.
use strict;
use warnings;
use feature 'signatures';
use Test::More;
use FindBin;
use lib "$FindBin::Bin/lib";

use VEL::Rules;
use VELTest;

sub rules ($text) {
    return VEL::Rules->new(VEL::Rules::Source::read_tree(database("RULES:\n$text\nEND")));
}

sub faults ($text) { return join '', map { "$_\n" } rules($text)->faults }

subtest 'the blocks of the rules' => sub {
    my $database = database(<<'END');
      RULES:   # a comment
        Language   Version = 1.0
        Note = a = b: \# not a comment, \
          continued
        OBJECT:  WALL  PART
          CASE: One
            If Parameter = Kind
          END
          CASE:
          END
        END
        Silent =
      END
END
    my $case = sub ($component, $name, %fields) {
        my $path = "/RULES/OBJECT:WALL PART/$component";
        return { kind => 'CASE', name => $name, path => $path, fields => \%fields, blocks => [] };
    };
    is_deeply VEL::Rules::Source::read_tree($database), {
        kind => 'RULES', name => undef, path => '/RULES',
        fields => { 'Language Version' => '1.0', 'Note' => 'a = b: \# not a comment, continued', 'Silent' => '' },
        blocks => [ {
                kind => 'OBJECT', name => 'WALL PART', path => '/RULES/OBJECT:WALL PART', fields => {},
                blocks => [ $case->('CASE:One', 'One', 'If Parameter' => 'Kind'), $case->('CASE', undef) ],
        } ],
    }, 'are those of the database';
    is_deeply VEL::Rules::Source::read_tree(VEL::Parser::Lite::NEW()),
        { kind => 'RULES', name => undef, path => '/RULES', fields => {}, blocks => [] }, 'none without rules';
};

subtest 'an object rule' => sub {
    my $rules = rules(<<'END');
      Language Version = 5.7
      OBJECT: BOUNDARY
        Description = A surface.
        Help Topic = Boundaries
        Parents = /
        Maximum Count = 3
        Expert = Yes
        Required Parameters = Kind, Location
        Optional Parameters = Moving Frame
      END
END
    is join('', $rules->faults), '', 'is without fault';
    is $rules->version, '5.7', 'version of the libraries';
    my $type = $rules->type('OBJECT', 'BOUNDARY');
    is $type->{description}, 'A surface.', 'description';
    is $type->{help}, 'Boundaries', 'help topic';
    is $type->{maximum}, 3, 'maximum count';
    is $type->{expert}, 1, 'expert';
    is $type->{free}, 0, 'free parameters are off by default';
    is_deeply $type->{parents}, { '/' => 1 }, 'parents';
    is_deeply $type->plain_variant->{order}, [ 'Kind', 'Location', 'Moving Frame' ], 'order of the parameters';
    is $rules->type('SINGLETON', 'BOUNDARY'), undef, 'a singleton of that type has no rule';
};

subtest 'the defaults of a parameter rule' => sub {
    my $rules = rules("PARAMETER: Plain\nEND");
    my %said = map { $_ => 1 } qw(ruled);
    my %expected = (
        name => 'Plain', ruled => 1, type => 'String', untyped => 0, unitless => 0, list => 0, values => undef, objects => undef,
        units => undef, lower => undef, upper => undef, exclusive => 0, minimum => undef, maximum => undef,
        default => undef, editable => 1, running => 0, expert => 0, expressions => 1,
        description => undef, help => undef, priority => undef, anything => 1,
    );
    is_deeply { %{ $rules->general('Plain') } }, \%expected, 'of a rule that states nothing';
    is_deeply { %{ $rules->general('Other') } }, { %expected, name => 'Other', ruled => 0 },
        'of one that there is not';
};

subtest 'the object rule overrides the general rule field by field, and a case overrides both' => sub {
    my $rules = rules(<<'END');
      PARAMETER: Speed
        Type = Real
        Units = m s^-1
        Description = general
      END
      OBJECT: FAN
        Required Parameters = Kind, Speed
        PARAMETER: Speed
          Description = of the fan
          Expert = Yes
        END
        CASE: Fast
          If Parameter = Kind
          Is One Of = Axial, Radial
          Optional Parameters = Guard
          PARAMETER: Speed
            Upper Bound = 90 [m s^-1]
            Expert = No
          END
        END
      END
END
    my $type = $rules->type('OBJECT', 'FAN');
    my $plain = $type->parameter($type->plain_variant, 'Speed');
    is_deeply [ @$plain{qw(type units description expert upper)} ],
        [ 'Real', 'm s^-1', 'of the fan', 1, undef ], 'without the case';
    my $fast = $type->variant(sub ($name) { return { Kind => 'Radial' }->{$name} });
    is_deeply [ @{ $type->parameter($fast, 'Speed') }{qw(type units description expert upper)} ],
        [ 'Real', 'm s^-1', 'of the fan', 0, '90 [m s^-1]' ], 'with it';
    is_deeply $fast->{order}, [ 'Kind', 'Speed', 'Guard' ], 'the case adds its lists';
    is $type->variant(sub ($name) { return 'Paddle' }), $type->plain_variant, 'another value, no case';
    is $type->variant(sub ($name) { return undef }), $type->plain_variant, 'no value, no case';
};

subtest 'a logical switch is compared by its meaning' => sub {
    my $type = rules(<<'END')->type('OBJECT', 'FAN');
      OBJECT: FAN
        Required Parameters = Guarded
        PARAMETER: Guarded
          Type = Logical
        END
        CASE: With guard
          If Parameter = Guarded
          Is One Of = Yes
          Required Parameters = Mesh Width
        END
      END
END
    for my $text (qw(Yes true on 1)) {
        is_deeply $type->variant(sub ($name) { return $text })->{required}, [ 'Guarded', 'Mesh Width' ], qq("$text" is yes);
    }
    is_deeply $type->variant(sub ($name) { return 'off' })->{required}, ['Guarded'], 'off';
};

subtest 'two cases that apply are combined, in rule order' => sub {
    my $type = rules(<<'END')->type('OBJECT', 'FAN');
      OBJECT: FAN
        Required Parameters = A, B
        CASE: Second Switch
          If Parameter = B
          Is One Of = Yes
          Required Parameters = Of B
        END
        CASE: First Switch
          If Parameter = A
          Is One Of = Yes
          Required Parameters = Of A
          Optional Parameters = B
        END
      END
END
    my $both = $type->variant(sub ($name) { return 'Yes' });
    is_deeply $both->{order}, [ 'A', 'B', 'Of B', 'Of A' ], 'no name twice';
    is $type->variant(sub ($name) { return 'Yes' }), $both, 'objects with the same cases have one variant';
};

subtest 'inheritance' => sub {
    my $rules = rules(<<'END');
      OBJECT: BASE
        Description = base
        Expert = Yes
        Parents = /
        Required Parameters = Kind, Size
        Optional Parameters = Remark
        CASE: Big
          If Parameter = Kind
          Is One Of = Big
          Required Parameters = Weight
        END
        CASE: Small
          If Parameter = Kind
          Is One Of = Small
          Required Parameters = Colour
        END
        PARAMETER: Size
          Type = Real
          Units = m
          Lower Bound = 0 [m]
        END
      END
      SINGLETON: MIDDLE
        Inherits = OBJECT:BASE
        Expert = No
        PARAMETER: Size
          Units = mm
        END
      END
      OBJECT: LAST
        Inherits = SINGLETON:MIDDLE
        Required Parameters = Kind
        CASE: Big
          Required Parameters = Height
          If Parameter = Kind
          Is One Of = Big, Huge
        END
      END
END
    is join('', $rules->faults), '', 'without fault';
    my $last = $rules->type('OBJECT', 'LAST');
    is $last->{description}, 'base', 'a field through two rules';
    is $last->{expert}, 0, 'the nearer rule wins';
    is_deeply $last->{required}, ['Kind'], 'a list that the rule states replaces the inherited list';
    is_deeply $last->{optional}, ['Remark'], 'another list is inherited';
    my $size = $last->parameter($last->plain_variant, 'Size');
    is_deeply [ @$size{qw(type units lower)} ], [ 'Real', 'mm', '0 [m]' ], 'parameter rules, field by field';
    is join(' ', map { $_->{label} } @{ $last->{cases} }), 'Big Small', 'each case once';
    is_deeply $last->variant(sub ($name) { return 'Huge' })->{required}, [ 'Kind', 'Height' ], 'a case restated';
    is_deeply $last->variant(sub ($name) { return 'Small' })->{required}, [ 'Kind', 'Colour' ], 'a case inherited';
};

subtest 'a long chain of heirs' => sub {
    my @said;
    local $SIG{__WARN__} = sub { push @said, @_ };
    my $rules = rules(join "\n", "OBJECT: T0\nExpert = Yes\nEND",
        map { ("OBJECT: T$_", 'Inherits = OBJECT:T' . ($_ - 1), 'END') } 1 .. 1000);
    is $rules->type('OBJECT', 'T1000')->{expert}, 1, 'inherits everything';
    is join('', $rules->faults, @said), '', 'without warnings';
};

subtest 'types that the program itself knows' => sub {
    my $rules = rules("OBJECT: ANY\nEND");
    is_deeply [ map { $_->{type} } $rules->types ], [qw(ANY EXPRESSIONS LANGUAGE LIBRARY)], 'are added';
    ok !$rules->is_empty, 'there are rules';
    ok rules('')->is_empty, 'or there are no rules';
};

subtest 'faults are reported with their path, and all other rules work' => sub {
    is faults(<<'END'), <<'EXPECTED', 'all of them';
      Language Version = new
      OBJECT: FAN
        Requird Parameters = Kind
        Required Parameters = Kind,, 2nd Kind, Speed, Power
        Optional Parameters = -speed
        Parents = /, HOUSE
        Maximum Count = few
        Free Parameters = perhaps
        Optional Objects = BLADE, BLAD
        PARAMETER: Speed
          Type = Number
          Units = m per s
          Lower Bound = low
          Upper Bound = 5 [furlog]
        END
        PARAMETER: Power
          Type = Real
          Units = W
          Default = 5 [m]
        END
        CASE: Loose
          Is One Of = Yes
        END
        CASE: Empty
          If Parameter = Kind
          Is One Of =
        END
        STEP: here
        END
      END
      OBJECT: BLADE
        Inherits = OBJECT:WING
      END
      OBJECT: ONE
        Inherits = OBJECT:TWO
      END
      OBJECT: TWO
        Inherits = OBJECT:ONE
      END
      OBJECT: THREE
        Inherits = TWO
      END
      UPGRADE: next
      END
      UPGRADE: Version 2.0
        STEP: nothing
        END
        STEP: short
          Action = Rename Parameter
          Object Type = FAN
        END
        STEP: odd
          Action = Rename Object Type
          Object Type = FAN
          New Name = -fan
        END
      END
      SOMETHING: else
      END
END
/RULES/Language Version: "new" is not a version; use a value such as 5.7 [bad-rule]
/RULES/OBJECT:FAN/Free Parameters: "perhaps" is not a logical value; use Yes or No [bad-rule]
/RULES/OBJECT:FAN/Maximum Count: "few" is not a count; use 0 or a positive whole number [bad-rule]
/RULES/OBJECT:FAN/Optional Objects: Unknown object type "BLAD"; did you mean BLADE? [bad-rule]
/RULES/OBJECT:FAN/Optional Parameters: "-speed" is not a valid name; use letters, digits and blanks, and begin with a letter [bad-rule]
/RULES/OBJECT:FAN/Parents: Unknown object type "HOUSE"; correct the name or add a rule for it [bad-rule]
/RULES/OBJECT:FAN/Requird Parameters: OBJECT has no field "Requird Parameters"; did you mean Required Parameters? [bad-rule]
/RULES/OBJECT:FAN/Required Parameters: "", "2nd Kind" are not valid names; use letters, digits and blanks, and begin with a letter [bad-rule]
/RULES/OBJECT:FAN/PARAMETER:Speed/Lower Bound: "low" is not a number; use a value such as 10 or 1 [Pa] [bad-rule]
/RULES/OBJECT:FAN/PARAMETER:Speed/Type: Unknown type "Number"; use one of String, String List, Integer, Integer List, Real, Real List, Logical, Logical List [bad-rule]
/RULES/OBJECT:FAN/PARAMETER:Speed/Units: Unknown unit "m per s"; use a unit such as kg m^-3 [bad-rule]
/RULES/OBJECT:FAN/PARAMETER:Speed/Upper Bound: Unknown unit "furlog"; use a unit such as kg m^-3 [bad-rule]
/RULES/OBJECT:FAN/CASE:Loose: "If Parameter" is missing [bad-rule]
/RULES/OBJECT:FAN/CASE:Empty/Is One Of: The list is empty; add an entry or remove the field [bad-rule]
/RULES/OBJECT:FAN/STEP:here: "STEP" is not allowed here; use one of CASE, PARAMETER [bad-rule]
/RULES/OBJECT:THREE/Inherits: "TWO" is not the name of a rule; write OBJECT:TYPE or SINGLETON:TYPE [bad-rule]
/RULES/UPGRADE:next: "next" is not the name of an upgrade; use a name such as Version 5.7 [bad-rule]
/RULES/UPGRADE:Version 2.0/STEP:nothing: "Action" is missing [bad-rule]
/RULES/UPGRADE:Version 2.0/STEP:short: "Parameter" and "New Name" are missing [bad-rule]
/RULES/UPGRADE:Version 2.0/STEP:odd/New Name: "-fan" is not a valid name; use letters, digits and blanks, and begin with a letter [bad-rule]
/RULES/SOMETHING:else: "SOMETHING" is not allowed here; use one of OBJECT, PARAMETER, SINGLETON, UPGRADE [bad-rule]
/RULES/OBJECT:BLADE/Inherits: Unknown rule OBJECT:WING; correct the name or add the rule [bad-rule]
/RULES/OBJECT:TWO/Inherits: The rule inherits itself through OBJECT:ONE; inherit another rule [bad-rule]
/RULES/OBJECT:FAN/PARAMETER:Power/Default: Unit [m] has the wrong dimension; use [W] or a compatible unit [bad-rule]
EXPECTED
    my $type = rules("OBJECT: FAN\nParents = HOUSE\nRequired Parameters = ,Kind\nOdd = 1\nEND")->type('OBJECT', 'FAN');
    is_deeply $type->{required}, ['Kind'], 'the correct parts of a rule apply';
    is $type->{parents}, undef, 'a field without any correct part is ignored';
};

subtest 'texts at the limits of what a field may be' => sub {
    is faults("Language Version = $_"), '', "version $_" for qw(5 10 0.9 10.20.30);
    is faults("Language Version = $_"), qq(/RULES/Language Version: "$_" is not a version; use a value such as 5.7 [bad-rule]\n),
        "version $_" for qw(v5 5. .5);
    is faults("OBJECT: A\nMaximum Count = 0\nEND"), "/RULES/OBJECT:A/Maximum Count: 0 allows no objects; use 1 or more [bad-rule]\n", 'a count of none';
    is faults("OBJECT: A\n$_ =\nEND"), "/RULES/OBJECT:A/$_: The list is empty; add an entry or remove the field [bad-rule]\n", "an empty list: $_"
        for 'Parents', map { ("Required $_", "Optional $_") } 'Parameters', 'Objects';
    is faults("PARAMETER: P\nAllowed Objects =\nEND"), "/RULES/PARAMETER:P/Allowed Objects: The list is empty; add an entry or remove the field [bad-rule]\n",
        'an empty list of types';
    is faults("PARAMETER: P\nAllowed Values =\nEND"), "/RULES/PARAMETER:P/Allowed Values: The list is empty; add an entry or remove the field [bad-rule]\n",
        'an empty list of values';
    is faults("PARAMETER: P\nType = Real\nUnits = [m]\nEND"),
        qq(/RULES/PARAMETER:P/Units: "[m]" has brackets; write the unit without them [bad-rule]\n), 'a unit in brackets';
    is faults("UPGRADE: $_\nEND"), qq(/RULES/UPGRADE:$_: "$_" is not the name of an upgrade; use a name such as Version 5.7 [bad-rule]\n),
        "UPGRADE: $_" for 'Version x', 'to Version 2';
    is scalar(my @none = rules("UPGRADE: next\nEND")->upgrades), 0, 'an upgrade to no version does not run';
    is scalar(my @problems = rules("PARAMETER: P\nAllowed Values =\nEND")->general('P')->problems('x', {})), 0,
        'a list that is at fault is not used';
};

subtest 'blocks without a name' => sub {
    my @said;
    local $SIG{__WARN__} = sub { push @said, @_ };
    is faults("OBJECT:\nCASE:\nEND\nEND\nPARAMETER:\nEND\nOBJECT: FAN\nPARAMETER:\nEND\nEND"), <<'TEXT', 'are reported';
/RULES/OBJECT: OBJECT needs a name; write "OBJECT: name" [bad-rule]
/RULES/PARAMETER: PARAMETER needs a name; write "PARAMETER: name" [bad-rule]
/RULES/OBJECT:FAN/PARAMETER: PARAMETER needs a name; write "PARAMETER: name" [bad-rule]
TEXT
    is "@said", '', 'and there is no other fault';
};

subtest 'rules that are correct by themselves must not contradict each other' => sub {
    is faults(<<'END'), <<'EXPECTED', 'every contradiction is reported';
      Language Version = 2.9
      UPGRADE: Version 2.10
      END
      UPGRADE: Version 2.9.0
      END
      PARAMETER: Depth
        Units = m
        Lower Bound = 2 [m]
        Upper Bound = 20 [cm]
      END
      OBJECT: FAN
        Required Parameters = Kind, Guarded, Speed, Step
        Optional Parameters = Sizes, Names, Gap
        CASE: Axial
          If Parameter = Kind
          Is One Of = Axail, Radial, Both
          Optional Parameters = Hub
          PARAMETER: Hub
            Type = Real
            Units = m
            Default = 1 [s]
          END
          PARAMETER: Hob
          END
        END
        CASE: Guard
          If Parameter = Guarded
          Is One Of = Sometimes, on
        END
        CASE: Odd
          If Parameter = Kin
          Is One Of = Axial
        END
        PARAMETER: Kind
          Allowed Values = Axial, Radial
          Default = Paddle
        END
        PARAMETER: Guarded
          Type = Logical
        END
        PARAMETER: Speed
          Units = m s^-1
        END
        PARAMETER: Sped
          Type = Real
        END
        PARAMETER: Gap
          Type = Real
          Units = mm
          Lower Bound = 0
          Upper Bound = 1 [kg]
        END
        PARAMETER: Step
          Type = Integer
          Lower Bound = 3
          Upper Bound = 3
          Bounds Exclusive = Yes
        END
        PARAMETER: Sizes
          Type = Real List
          Minimum Entries = 3
          Maximum Entries = 2
        END
      END
END
/RULES/UPGRADE:Version 2.10: Version 2.10 is later than Language Version 2.9; correct one of them [bad-rule]
/RULES/PARAMETER:Depth/Upper Bound: No value is allowed between the lower bound 2 [m] and the upper bound 20 [cm]; correct one of them [bad-rule]
/RULES/OBJECT:FAN/CASE:Axial/PARAMETER:Hub/Default: Unit [s] has the wrong dimension; use [m] or a compatible unit [bad-rule]
/RULES/OBJECT:FAN/PARAMETER:Kind/Default: "Paddle" is not allowed here; use one of Axial, Radial [bad-rule]
/RULES/OBJECT:FAN/PARAMETER:Speed/Units: "Units" is only allowed for numbers, not for String; remove it or change the type [bad-rule]
/RULES/OBJECT:FAN/PARAMETER:Gap/Lower Bound: 0 has no unit; write it as 0 [mm] [bad-rule]
/RULES/OBJECT:FAN/PARAMETER:Gap/Upper Bound: Unit [kg] has the wrong dimension; use [mm] or a compatible unit [bad-rule]
/RULES/OBJECT:FAN/PARAMETER:Step/Upper Bound: No value is allowed between the lower bound 3 and the upper bound 3; correct one of them [bad-rule]
/RULES/OBJECT:FAN/PARAMETER:Sizes/Maximum Entries: 2 is less than Minimum Entries = 3; correct one of them [bad-rule]
/RULES/OBJECT:FAN/CASE:Axial/Is One Of: "Axail" is not an allowed value of "Kind"; did you mean Axial? [bad-rule]
/RULES/OBJECT:FAN/CASE:Axial/Is One Of: "Both" is not an allowed value of "Kind"; use one of Axial, Radial [bad-rule]
/RULES/OBJECT:FAN/CASE:Axial/PARAMETER:Hob: "Hob" is not listed in FAN; did you mean Hub? [bad-rule]
/RULES/OBJECT:FAN/CASE:Guard/Is One Of: "Sometimes" is not an allowed value of "Guarded"; use Yes or No [bad-rule]
/RULES/OBJECT:FAN/CASE:Odd/If Parameter: "Kin" is not listed in FAN; did you mean Kind? [bad-rule]
/RULES/OBJECT:FAN/PARAMETER:Sped: "Sped" is not listed in FAN; did you mean Speed? [bad-rule]
EXPECTED
    is faults(<<'END'), '', 'and no correct rule';
      PARAMETER: Depth
        Units = m
      END
      OBJECT: BASE
        PARAMETER: Depth
          Type = Real
          Default = 1 [cm]
        END
        PARAMETER: Kind
          Allowed Values = A, B
        END
      END
      OBJECT: HEIR
        Inherits = OBJECT : BASE
        Required Parameters = Depth, Kind
        CASE: A
          If Parameter = Kind
          Is One Of = A
          PARAMETER: Depth
            Lower Bound = 0 [m]
          END
        END
      END
      OBJECT: ANYTHING
        Free Parameters = Yes
        PARAMETER: Remark
        END
      END
END
};

done_testing;
