<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <xsl:output omit-xml-declaration="yes" indent="yes"/>
  <xsl:attribute-set name="set" use-attribute-sets="inner"/>
  <xsl:attribute-set name="inner"><xsl:attribute name="b:at" namespace="u2">17</xsl:attribute></xsl:attribute-set>
  <xsl:template match="/r">
    <results>
      <b:by-name xmlns:b="u1"><xsl:attribute name="b:at" namespace="u2">1</xsl:attribute></b:by-name>
      <by-attribute xmlns:b="u1" b:x="1"><xsl:attribute name="b:at" namespace="u2">2</xsl:attribute></by-attribute>
      <by-declaration xmlns:b="u1"><xsl:attribute name="b:at" namespace="u2">3</xsl:attribute></by-declaration>
      <outer xmlns:b="u1">
        <inherited><xsl:attribute name="b:at" namespace="u2">4</xsl:attribute></inherited>
        <b:inherited-name><xsl:attribute name="b:at" namespace="u2">5</xsl:attribute></b:inherited-name>
        <inherited-attribute b:x="1"><xsl:attribute name="b:at" namespace="u2">6</xsl:attribute></inherited-attribute>
      </outer>
      <outer xmlns:b="u1"><literal-behind-set xsl:use-attribute-sets="set" b:at="16"/></outer>
      <same xmlns:b="u2" b:x="1"><xsl:attribute name="b:at" namespace="u2">7</xsl:attribute></same>
      <xsl:element name="b:computed" namespace="u1"><xsl:attribute name="b:at" namespace="u2">8</xsl:attribute></xsl:element>
      <first><xsl:attribute name="b:at" namespace="u1">9</xsl:attribute><xsl:attribute name="b:at" namespace="u2">10</xsl:attribute></first>
      <copied xmlns:b="u1" b:at="11"><xsl:copy-of select="@b:at" xmlns:b="u3"/></copied>
      <generated xmlns:prefix_8="u1"><xsl:attribute name="at" namespace="u2">12</xsl:attribute></generated>
      <many xmlns:b="u1" a1="" a2="" a3="" a4="" a5="" a6="" a7="" a8="" a9="" a10="" a11="" a12="" a13="" a14="" a15="" a16="">
        <xsl:attribute name="b:at" namespace="u2">13</xsl:attribute>
        <xsl:attribute name="c:at" namespace="u2">14</xsl:attribute>
        <xsl:attribute name="c:at" namespace="u3">15</xsl:attribute>
      </many>
    </results>
  </xsl:template>
</xsl:stylesheet>
